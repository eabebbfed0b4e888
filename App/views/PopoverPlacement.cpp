// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/PopoverPlacement.h"

#include <algorithm>

namespace {

/// Keeps a stretch of `length` inside `from`..`from + room`; one that is longer keeps its beginning visible.
int inside(int start, int length, int from, int room) {
    return std::max(from, std::min(start, from + room - length));
}

} // namespace

ScreenPoint toLogical(ScreenPoint point, const std::vector<ScreenArea>& screens) {
    for (const auto& [whole, scale] : screens) {
        const int x = static_cast<int>((point.x - whole.x) / scale);
        const int y = static_cast<int>((point.y - whole.y) / scale);
        if (point.x >= whole.x && point.y >= whole.y && x < whole.width && y < whole.height)
            return {whole.x + x, whole.y + y};
    }
    return point;
}

ScreenPoint toDevice(ScreenPoint point, const std::vector<ScreenArea>& screens) {
    for (const auto& [whole, scale] : screens) {
        const int x = point.x - whole.x;
        const int y = point.y - whole.y;
        if (x >= 0 && y >= 0 && x < whole.width && y < whole.height)
            return {whole.x + static_cast<int>(x * scale), whole.y + static_cast<int>(y * scale)};
    }
    return point;
}

ScreenPoint placePopover(std::optional<ScreenPoint> point, const ScreenRect& available, int width, int height) {
    const int right = available.x + available.width;
    const ScreenPoint anchor = point.value_or(ScreenPoint{right, available.y});
    const bool lowerHalf = anchor.y > available.y + available.height / 2;
    const int x = inside(anchor.x - width / 2, width, available.x, available.width);
    const int y = inside(lowerHalf ? anchor.y - height : anchor.y, height, available.y, available.height);
    return {x, y};
}

bool isCredible(ScreenPoint point, bool waylandSession) {
    constexpr int itemSize = 48; // the largest item that such a panel shows
    return !waylandSession || point.x >= itemSize || point.y >= itemSize;
}
