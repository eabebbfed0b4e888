// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/DevicePoint.h"

ScreenPoint toLogical(ScreenPoint point, const std::vector<ScreenArea>& screens) {
    for (const ScreenArea& screen : screens) {
        // A panel may send any number, also one that is further from the screen than an int can tell.
        const double x = (static_cast<double>(point.x) - screen.x) / screen.scale;
        const double y = (static_cast<double>(point.y) - screen.y) / screen.scale;
        if (x >= 0 && y >= 0 && x < screen.width && y < screen.height)
            return {screen.x + static_cast<int>(x), screen.y + static_cast<int>(y)};
    }
    return point;
}
