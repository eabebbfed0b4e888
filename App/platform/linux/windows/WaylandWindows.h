// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DesktopWindows.h"

#include <memory>

/// Our windows on a Wayland compositor. What it takes to place the popover is loaded when that is shown first. Where
/// the compositor or the program lacks it, the compositor places the popover like any window.
class WaylandWindows final : public DesktopWindows {
public:
    bool canHaveShadow() override;
    void willShowPopover(QWindow& window, const QRect& place, int shadow) override;
    void popoverShown(QWindow& window, std::function<void()> clickedElsewhere) override;
    void popoverHidden() override;
    void willShowSettings(QWindow& window) override;

private:
    bool wasLoaded_ = false;
    std::unique_ptr<DesktopWindows> layerShell_;

    void load();
};
