// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <memory>
#include <vector>

class QMenu;

/// Gives a menu these entries and no others.
void fillMenu(QMenu& menu, const std::vector<StatusItem::MenuEntry>& entries);

/// The item's menu as a window of our own, for panels that draw none.
class PanelMenu {
public:
    PanelMenu();
    ~PanelMenu();

    /// Shows the entries at a place on the screen, in the place of what it showed before. The menu goes by itself.
    void show(const std::vector<StatusItem::MenuEntry>& entries, ScreenPoint point);

private:
    std::unique_ptr<QMenu> menu_; ///< made at first use
};
