// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"
#include "platform/linux/GlyphImages.h"

#include <QDBusConnection>

#include <filesystem>

class MainLoop;

/// The panel of the session, whichever kind there is: items go to a StatusNotifier panel, and on X11 into the old
/// system tray as long as no such panel has been there for a while.
class PanelBar final : public StatusBar {
public:
    /// `iconTheme` is the folder "…/icons" that holds our glyphs.
    PanelBar(QDBusConnection bus, MainLoop& loop, std::filesystem::path iconTheme);

    [[nodiscard]] std::unique_ptr<StatusItem> createItem() override;

private:
    QDBusConnection bus_;
    MainLoop& loop_;
    GlyphImages glyphs_;
};
