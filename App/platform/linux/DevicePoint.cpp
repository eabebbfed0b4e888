// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DevicePoint.h"

ScreenPoint toLogical(ScreenPoint point, const std::vector<ScreenArea>& screens) {
    for (const ScreenArea& screen : screens) {
        const int x = static_cast<int>((point.x - screen.x) / screen.scale);
        const int y = static_cast<int>((point.y - screen.y) / screen.scale);
        if (point.x >= screen.x && point.y >= screen.y && x < screen.width && y < screen.height)
            return {screen.x + x, screen.y + y};
    }
    return point;
}
