// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A point on the screen in Qt's coordinates.
struct ScreenPoint {
    int x = 0;
    int y = 0;
    bool operator==(const ScreenPoint&) const = default;
};

/// A rectangle on the screen, in the same coordinates.
struct ScreenRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// What we take for the thickest panel, in pixels. Wayland does not tell how thick panels are, nor does X11 if there
/// are several screens.
constexpr int thickestPanel = 64;

/// An item in the panel; always visible.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    /// What the item shows.
    struct Content {
        std::string symbol;       ///< a name for which `knowsSymbol` is true; empty for no image
        std::string numberSymbol; ///< a symbol that contains the percentage or the remaining time, for panels
                                  ///< that show no title; empty to show neither
        std::string accessibilityDescription; ///< describes the image to screen readers
        std::string title;                    ///< text beside the image; empty for the image alone
        std::string widestTitle;              ///< the widest title to expect, so panels can keep the width constant
        std::string toolTip;                  ///< lines joined with a line feed
        bool operator==(const Content&) const = default;
    };

    /// An entry of the item's menu.
    struct MenuEntry {
        std::string label;
        std::function<void()> action;
    };

    /// Whether there is a glyph of this name.
    virtual bool knowsSymbol(std::string_view name) const = 0;

    /// Shows the content; only differences from the content shown before are sent to the panel.
    virtual void show(const Content& content) = 0;

    /// Sets what a click does. The action gets the position of the click if the panel reports one.
    virtual void setAction(std::function<void(std::optional<ScreenPoint>)> action) = 0;

    /// Sets the entries of the item's menu, in order.
    virtual void setMenu(std::vector<MenuEntry> entries) = 0;
};

/// The panel.
class StatusBar {
public:
    virtual ~StatusBar() = default;

    /// Puts an item into the panel, now or as soon as there is a panel; it stays until it is destroyed.
    [[nodiscard]] virtual std::unique_ptr<StatusItem> createItem() = 0;
};
