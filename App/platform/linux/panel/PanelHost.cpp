// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/PanelHost.h"

#include <array>

namespace {

struct Known {
    std::string_view prefix; ///< of the name of the process that owns the watcher
    PanelHost host;
};

constexpr PanelHost labelled{.showsLabel = true, .recolours = true, .premultiplied = false};
constexpr PanelHost recolouring{.showsLabel = false, .recolours = true, .premultiplied = false};

/// LXQt, Cinnamon, Budgie and waybar show no label and leave images as they are, so they are not in this list.
constexpr std::array known{
    Known{"gnome-shell", labelled},     // with the AppIndicator extension
    Known{"ayatana-indicat", labelled}, // takes icon names only; the panel that shows it draws the label
    Known{"indicator-appl", labelled},  // the same service under its older name
    Known{"mate-panel", {.showsLabel = true, .recolours = false, .premultiplied = false}},
    Known{"notification-ar",
          {.showsLabel = true, .recolours = false, .premultiplied = false}}, // MATE's applet in a process of its own
    Known{"kded", recolouring}, // Plasma: the watcher is a module of its daemon, kded
    Known{"plasmashell", recolouring},
    // QUIRK: swaybar passes the pixels unchanged to cairo, which takes them as premultiplied; otherwise every shape
    // gets a bright rim.
    Known{"swaybar", {.showsLabel = false, .recolours = false, .premultiplied = true}},
    Known{"wrapper-", recolouring}, // Xfce 4.20: the process of a panel plugin; the version of plugins follows
    Known{"xfce4-panel", recolouring},
};

/// QUIRK: Xfce 4.18 names the process of each plugin after its place in the panel: "panel-6-systray", cut off after 15
/// characters.
bool isXfceTray(std::string_view process) {
    return process.starts_with("panel-") && process.find("-systra") != std::string_view::npos;
}

} // namespace

PanelHost panelHost(std::string_view watcherProcess) {
    if (isXfceTray(watcherProcess))
        return recolouring;
    for (const auto& [prefix, host] : known) {
        if (watcherProcess.starts_with(prefix))
            return host;
    }
    return {};
}
