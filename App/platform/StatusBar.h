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

/// An item in the panel that is always visible.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    /// What the item shows.
    struct Content {
        std::string symbol;                   ///< a name that `knowsSymbol`; empty for no image
        std::string numberSymbol;             ///< the same with the percentage in it, for panels that show no title;
                                              ///< empty when the percentage is not to be shown
        std::string accessibilityDescription; ///< what the image is, for those who cannot see it
        std::string title;                    ///< text beside the image; empty for the image alone
        std::string widestTitle;              ///< the widest text to expect there, so that hosts can keep the width
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

    /// Shows the content; only what differs from what is shown goes out to the panel.
    virtual void show(const Content& content) = 0;

    /// Sets what a click does; it is given the place of the click as the panel tells it, if it does.
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
