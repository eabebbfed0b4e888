// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Where a layer surface is along one side of its screen: at which end, and how far from it. The compositor keeps it
/// off the panels at that end.
struct LayerEdge {
    bool isAtEnd = false; ///< right or bottom, else left or top
    int margin = 0;

    bool operator==(const LayerEdge&) const = default;
};

/// Where a window belongs that is to be here on a screen that reaches from `screenStart`. One that would lie beside a
/// panel is put at that end, 8 pixels clear of it where there is room: how thick the panel is, only the compositor
/// knows.
LayerEdge layerEdge(int start, int length, int screenStart, int screenLength);
