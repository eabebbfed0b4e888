// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <vector>

/// A screen in Qt's terms: its corner in device pixels, its size in pixels of `scale` device pixels each.
struct ScreenArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    double scale = 1;
};

/// A point in device pixels, as panels give it, in Qt's coordinates; unchanged when it lies on no screen.
ScreenPoint toLogical(ScreenPoint point, const std::vector<ScreenArea>& screens);
