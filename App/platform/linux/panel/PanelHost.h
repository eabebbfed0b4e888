// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

/// How a panel treats the items that it shows.
struct PanelHost {
    bool showsLabel = false; ///< draws the text beside the icon; otherwise the icon itself has to carry the number
    bool recolours = false;  ///< takes icons by name and draws symbolic ones in its own colour; otherwise we draw them
    bool premultiplied = false; ///< takes the colours of images as multiplied by their opacity, against the protocol

    bool operator==(const PanelHost&) const = default;
};

/// The panel behind a StatusNotifierWatcher, by the name of the process that owns it (/proc/PID/comm, at most 15
/// characters). An unknown one gets what is readable everywhere: an image with the number in it.
PanelHost panelHost(std::string_view watcherProcess);
