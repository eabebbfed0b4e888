// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

class QRect;
class QWindow;

/// What the desktop has to be told of our windows, and what it tells in turn, beyond what Qt does.
class DesktopWindows {
public:
    virtual ~DesktopWindows() = default;

    /// The popover's window, which exists, is about to be shown at this place in Qt's coordinates, as far as a program
    /// can place its windows.
    virtual void willShowPopover(QWindow& window, const QRect& place) = 0;

    /// The popover has been shown, or has another place or size. Until `popoverHidden`, calls back for clicks elsewhere
    /// after which it would keep the focus.
    virtual void popoverShown(QWindow& window, std::function<void()> clickedElsewhere) = 0;

    /// The popover has been hidden.
    virtual void popoverHidden() = 0;

    /// The settings window, which exists, is about to be shown. It is not to be minimised.
    virtual void willShowSettings(QWindow& window) = 0;
};
