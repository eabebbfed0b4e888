// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"
#include "platform/linux/panel/GlyphImages.h"

#include <QDBusConnection>

#include <filesystem>
#include <functional>
#include <memory>

class MainLoop;

/// Makes an item in the old system tray.
using MakeTrayItem = std::function<std::unique_ptr<StatusItem>(const GlyphImages&)>;

/// The session's panel, of either kind: items go to a StatusNotifier panel, and into the old system tray once there has
/// been no such panel for a while.
class PanelBar final : public StatusBar {
public:
    /// `iconTheme` is the folder "…/icons" that holds our glyphs. `makeTrayItem` is empty where there is no old tray.
    /// `whenUnseen` is called if there has been no StatusNotifier panel in an item's first minute.
    PanelBar(QDBusConnection bus, MainLoop& loop, std::filesystem::path iconTheme, MakeTrayItem makeTrayItem,
             std::function<void()> whenUnseen);

    [[nodiscard]] std::unique_ptr<StatusItem> createItem() override;

private:
    QDBusConnection bus_;
    MainLoop& loop_;
    GlyphImages glyphs_;
    MakeTrayItem makeTrayItem_;
    std::function<void()> whenUnseen_;
};
