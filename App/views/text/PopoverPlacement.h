// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

/// The top left corner for a popover of this size: beside the clicked point, on the side away from the panel, wholly
/// inside `available` (the screen without its panels), and 8 pixels away from panel and edges where there is room for
/// that.
ScreenPoint placePopover(ScreenPoint point, const ScreenRect& available, int width, int height);

/// Where an item usually is whose panel gives no point: in the right corner of the screen at the bottom, if only there
/// a panel takes room from `available`, else at the top.
ScreenPoint usualPlaceOfItem(const ScreenRect& screen, const ScreenRect& available);

/// Whether a point from a panel can be a position on the screen. Some panels in Wayland sessions give the position
/// inside the item instead, which is near the top left corner; X11 panels do not.
bool isCredible(ScreenPoint point, bool waylandSession);
