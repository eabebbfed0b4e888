// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DesktopWindows.h"

#include <QtGlobal>

#include <memory>
#include <vector>

class QWindow;

/// Our windows on a Wayland compositor that has layer-shell, the protocol of its panels. The popover opens at its item
/// like a panel's own, and hears of each click elsewhere. Such compositors let no other window choose its place.
class LayerShellWindows final : public DesktopWindows {
public:
    LayerShellWindows() = default;
    ~LayerShellWindows() override;
    LayerShellWindows(const LayerShellWindows&) = delete;
    LayerShellWindows& operator=(const LayerShellWindows&) = delete;

    bool canHaveShadow() override;
    void willShowPopover(QWindow& window, const QRect& place, int shadow) override;
    void popoverShown(QWindow& window, std::function<void()> clickedElsewhere) override;
    void popoverHidden() override;
    void willShowSettings(QWindow& window) override;

private:
    /// Invisible windows over the screens, under the popover.
    std::vector<std::unique_ptr<QWindow>> under_;
};

/// The plugin's entry point; the caller owns the result. Null where the compositor has no layer-shell.
extern "C" Q_DECL_EXPORT DesktopWindows* makeLayerShellWindows();
