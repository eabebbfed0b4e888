// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <optional>

/// A rectangle on the screen.
struct ScreenRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// Where the top left corner of a popover of that size goes: beside the point that was clicked, on the side away from
/// the panel, wholly inside `available` (the screen without its panels). Without a point, the top right corner.
ScreenPoint placePopover(std::optional<ScreenPoint> point, const ScreenRect& available, int width, int height);

/// Whether a point that a panel gave can be a place on the screen. Some panels of Wayland sessions give the place
/// inside the item instead, which is near the corner; X11 panels do not.
bool isCredible(ScreenPoint point, bool waylandSession);
