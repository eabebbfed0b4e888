// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

/// How a panel treats the items that it shows.
struct PanelHost {
    bool showsLabel = false; ///< draws the text beside the icon; otherwise the icon itself has to carry the number
    bool recolours = false;  ///< takes icons by name and draws symbolic ones in its own colour; otherwise we draw them
    bool pointsAreLocal = false; ///< tells the position of a click as counted from a window of its own
    bool premultiplied = false;  ///< takes the colours of images as multiplied by their opacity, against the protocol

    /// What it shows of a tooltip's title and text.
    enum class ToolTip {
        title,        ///< the title, perhaps the text as well
        titleAndText, ///< the title, mostly in bold, and below it the text
        text,         ///< the text; the title only if there is no text
    };
    ToolTip toolTip = ToolTip::title;
    bool describesLoneTitle = false; ///< adds the description of the icon to a title without a text

    bool operator==(const PanelHost&) const = default;
};

/// The panel behind a StatusNotifierWatcher, by the name of the process that owns it (/proc/PID/comm, at most 15
/// characters). An unknown one gets what is readable everywhere: an image with the number in it.
PanelHost panelHost(std::string_view watcherProcess);
