// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"
#include "platform/linux/panel/GlyphImages.h"

#include <QMenu>
#include <QSystemTrayIcon>

/// An item in the old system tray of X11, for panels that support nothing newer. It has no label, so the icon carries
/// the number.
class XEmbedItem final : public StatusItem {
public:
    /// Whether such a tray is possible: true on X11.
    static bool isPossible();

    /// Whether there is such a tray now.
    static bool hasTray();

    explicit XEmbedItem(const GlyphImages& glyphs);

    bool knowsSymbol(std::string_view name) const override;
    void show(const Content& content) override;
    void setAction(std::function<void(std::optional<ScreenPoint>)> action) override;
    void setMenu(std::vector<MenuEntry> entries) override;

private:
    const GlyphImages& glyphs_;
    QMenu menu_;
    QSystemTrayIcon icon_;
    std::string shownSymbol_;
    std::function<void(std::optional<ScreenPoint>)> action_;
};
