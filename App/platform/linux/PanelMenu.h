// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <vector>

/// Shows the entries as a menu of our own at a place on the screen, for panels that draw none. It goes by itself.
void showPanelMenu(const std::vector<StatusItem::MenuEntry>& entries, ScreenPoint point);
