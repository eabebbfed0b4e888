// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <functional>
#include <optional>

class QRect;
class QScreen;
class QWindow;

/// What the desktop has to be told of our windows, and what it tells in turn, beyond what Qt does.
class DesktopWindows {
public:
    virtual ~DesktopWindows() = default;

    /// The popover is wanted: whatever has to be asked for showing it can be asked now, while its content is made.
    virtual void popoverWanted() {}

    /// What panels leave free of a screen, in Qt's coordinates; empty where Qt knows that as well as we do.
    virtual std::optional<ScreenRect> freeArea(const QScreen& /*screen*/) { return std::nullopt; }

    /// Whether a window may have transparent edges now, for round corners and a shadow. Where nothing composes the
    /// windows, they would be black; and some compositors take a shadow for a part of the window.
    virtual bool canHaveShadow() = 0;

    /// The popover's window, which exists, is about to be shown at this place in Qt's coordinates, as far as a program
    /// can place its windows. The window reaches `shadow` pixels further on each side.
    virtual void willShowPopover(QWindow& window, const QRect& place, int shadow) = 0;

    /// The popover is on the screen, or has another place or size. Until `popoverHidden`, calls back for clicks
    /// elsewhere after which it would keep the focus.
    virtual void popoverShown(QWindow& window, std::function<void()> clickedElsewhere) = 0;

    /// The popover has been hidden.
    virtual void popoverHidden() = 0;

    /// The settings window, which exists, is about to be shown. It is not to be minimised.
    virtual void willShowSettings(QWindow& window) = 0;
};
