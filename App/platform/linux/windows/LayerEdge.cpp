// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/LayerEdge.h"

#include "platform/StatusBar.h"

#include <algorithm>

LayerEdge layerEdge(int start, int length, int screenStart, int screenLength) {
    constexpr int gap = 8; // to the panel or the edge of the screen, as everywhere
    const int before = start - screenStart;
    const int after = screenStart + screenLength - (start + length);
    if (std::min(before, after) <= thickestPanel)
        return {.isAtEnd = after < before, .margin = std::clamp(std::min(before, after), 0, gap)};
    return {.margin = before};
}
