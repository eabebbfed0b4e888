// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/PopoverPlacement.h"

#include <algorithm>

namespace {

/// Moves a stretch of `length` inside `from`..`from + room`; if it is longer, its beginning stays visible.
int inside(int start, int length, int from, int room) {
    return std::max(from, std::min(start, from + room - length));
}

constexpr int gap = 8; ///< to the panel and to the edges of the screen

/// That, or what there is on each side.
int possibleGap(int length, int room) {
    return std::clamp((room - length) / 2, 0, gap);
}

enum class Panel { top, bottom, left, right };

/// The edge of the screen that the panel with this point is on. A point in a corner, or away from all edges, is taken
/// to be on a panel at the top or bottom, which are the usual ones.
Panel panelAt(ScreenPoint point, const ScreenRect& available) {
    const int right = available.x + available.width;
    const int bottom = available.y + available.height;
    const Panel usual = point.y > available.y + available.height / 2 ? Panel::bottom : Panel::top;
    // If the available area leaves out the panels, the point shows which one it is on.
    const bool isBeside = point.x < available.x || point.x >= right;
    const bool isOverOrUnder = point.y < available.y || point.y >= bottom;
    if (isOverOrUnder)
        return usual;
    if (!isBeside && (point.y < available.y + thickestPanel || point.y >= bottom - thickestPanel))
        return usual;
    if (point.x < available.x + thickestPanel)
        return Panel::left;
    return point.x >= right - thickestPanel ? Panel::right : usual;
}

} // namespace

ScreenPoint placePopover(ScreenPoint point, const ScreenRect& available, int width, int height) {
    ScreenPoint corner{point.x - width / 2, point.y - height / 2};
    switch (panelAt(point, available)) {
    case Panel::top:
        corner.y = point.y + gap;
        break;
    case Panel::bottom:
        corner.y = point.y - gap - height;
        break;
    case Panel::left:
        corner.x = point.x + gap;
        break;
    case Panel::right:
        corner.x = point.x - gap - width;
        break;
    }
    const int beside = possibleGap(width, available.width);
    const int aboveAndBelow = possibleGap(height, available.height);
    return {inside(corner.x, width, available.x + beside, available.width - 2 * beside),
            inside(corner.y, height, available.y + aboveAndBelow, available.height - 2 * aboveAndBelow)};
}

ScreenPoint usualPlaceOfItem(const ScreenRect& screen, const ScreenRect& available) {
    const bool hasPanelAtTop = available.y > screen.y;
    const bool hasPanelAtBottom = available.y + available.height < screen.y + screen.height;
    return {available.x + available.width,
            hasPanelAtBottom && !hasPanelAtTop ? available.y + available.height : available.y - 1};
}

bool isCredible(ScreenPoint point, bool waylandSession) {
    constexpr int itemSize = 48; // the largest item on a Wayland panel, in pixels
    const auto isInItem = [](int place) { return place >= 0 && place < itemSize; };
    return !waylandSession || !isInItem(point.x) || !isInItem(point.y);
}
