// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/PanelHost.h"

#include <array>

namespace {

struct Known {
    std::string_view prefix; ///< of the name of the process that owns the watcher
    PanelHost host;
};

using enum PanelHost::ToolTip;

constexpr PanelHost labelled{.showsLabel = true, .recolours = true};
constexpr PanelHost mate{.showsLabel = true, .pointsAreLocal = true, .toolTip = titleAndText};
constexpr PanelHost plasma{.recolours = true, .toolTip = titleAndText};
constexpr PanelHost xfce{.recolours = true, .toolTip = titleAndText, .describesLoneTitle = true};

/// LXQt shows no label, leaves images as they are, and shows a tooltip's title only, like one that is not in this list.
constexpr std::array known{
    Known{"gnome-shell", labelled},     // with the AppIndicator extension
    Known{"ayatana-indicat", labelled}, // takes icon names only; the panel that shows it draws the label
    Known{"indicator-appl", labelled},  // the same service under its older name
    Known{"mate-panel", mate},
    Known{"notification-ar", mate}, // its applet in a process of its own
    Known{"kded", plasma},          // the watcher is a module of its daemon, kded
    Known{"plasmashell", plasma},
    // QUIRK: swaybar passes the pixels unchanged to cairo, which takes them as premultiplied; otherwise every shape
    // gets a bright rim.
    Known{"swaybar", {.premultiplied = true}},
    Known{"waybar", {.toolTip = titleAndText}},
    Known{"xapp-sn-watcher", {.toolTip = titleAndText}}, // Cinnamon
    Known{"budgie-panel", {.toolTip = text}},
    Known{"wrapper-", xfce}, // Xfce 4.20: the process of a panel plugin; the version of plugins follows
    Known{"xfce4-panel", xfce},
};

/// QUIRK: Xfce 4.18 names the process of each plugin after its place in the panel: "panel-6-systray", cut off after 15
/// characters.
bool isXfceTray(std::string_view process) {
    return process.starts_with("panel-") && process.find("-systra") != std::string_view::npos;
}

} // namespace

PanelHost panelHost(std::string_view watcherProcess) {
    if (isXfceTray(watcherProcess))
        return xfce;
    for (const auto& [prefix, host] : known) {
        if (watcherProcess.starts_with(prefix))
            return host;
    }
    return {};
}
