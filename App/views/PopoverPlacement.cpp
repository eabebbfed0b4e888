// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/PopoverPlacement.h"

#include <algorithm>

namespace {

/// Keeps a stretch of `length` inside `from`..`from + room`; one that is longer keeps its beginning visible.
int inside(int start, int length, int from, int room) {
    return std::max(from, std::min(start, from + room - length));
}

} // namespace

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
