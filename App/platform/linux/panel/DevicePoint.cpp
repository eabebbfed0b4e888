// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/DevicePoint.h"

ScreenPoint toLogical(ScreenPoint point, const std::vector<ScreenArea>& screens) {
    for (const ScreenArea& screen : screens) {
        // In doubles: a panel may send any number, even one whose distance from the screen overflows an int.
        const double x = (static_cast<double>(point.x) - screen.x) / screen.scale;
        const double y = (static_cast<double>(point.y) - screen.y) / screen.scale;
        if (x >= 0 && y >= 0 && x < screen.width && y < screen.height)
            return {screen.x + static_cast<int>(x), screen.y + static_cast<int>(y)};
    }
    return point;
}
