// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <memory>
#include <vector>

class QMenu;

/// Replaces the menu's entries with these.
void fillMenu(QMenu& menu, const std::vector<StatusItem::MenuEntry>& entries);

/// The item's menu as a window of our own, for panels that draw none.
class PanelMenu {
public:
    PanelMenu();
    ~PanelMenu();

    /// Shows the entries at a point on the screen, replacing those shown before. The menu closes by itself.
    void show(const std::vector<StatusItem::MenuEntry>& entries, ScreenPoint point);

private:
    std::unique_ptr<QMenu> menu_; ///< made at first use
};
