// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/WaylandWindows.h"

#include "platform/qt/PluginLoader.h"

#include <utility>

void WaylandWindows::load() {
    if (std::exchange(wasLoaded_, true))
        return;
    if (const auto make =
            reinterpret_cast<DesktopWindows* (*)()>(pluginFunction("velmora-layer-shell", "makeLayerShellWindows")))
        layerShell_.reset(make());
}

bool WaylandWindows::canHaveShadow() {
    load();
    return layerShell_ && layerShell_->canHaveShadow();
}

void WaylandWindows::willShowPopover(QWindow& window, const QRect& place, int shadow) {
    load();
    if (layerShell_)
        layerShell_->willShowPopover(window, place, shadow);
}

void WaylandWindows::popoverShown(QWindow& window, std::function<void()> clickedElsewhere) {
    if (layerShell_)
        layerShell_->popoverShown(window, std::move(clickedElsewhere));
}

void WaylandWindows::popoverHidden() {
    if (layerShell_)
        layerShell_->popoverHidden();
}

void WaylandWindows::willShowSettings(QWindow& /*window*/) {}
