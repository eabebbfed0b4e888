// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DesktopWindows.h"

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QTimer>
#include <QWindow>

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <vector>

/// Our windows on an X server; on any other display this does nothing. Inside a Wayland compositor the popover is a
/// window like others, so it stands in the task list unless that is told otherwise; and it hears nothing of clicks on
/// the panel and on the wallpaper, which take the focus from nobody. Outside of one it is a popup, which cannot take
/// the pointer for itself while the button that opened it is still held on the panel (Cinnamon tells of a click when
/// the button is pressed), so it would hear nothing of later clicks. It takes the pointer as soon as it can: Cinnamon's
/// panel lies above all windows.
class X11Windows final : public DesktopWindows, private QAbstractNativeEventFilter {
public:
    X11Windows();
    ~X11Windows() override;
    X11Windows(const X11Windows&) = delete;
    X11Windows& operator=(const X11Windows&) = delete;

    void popoverWanted() override;
    std::optional<ScreenRect> freeArea(const QScreen& screen) override;
    bool canHaveShadow() override;
    void willShowPopover(QWindow& window, const QRect& place, int shadow) override;
    void popoverShown(QWindow& window, std::function<void()> clickedElsewhere) override;
    void popoverHidden() override;
    void willShowSettings(QWindow& window) override;

private:
    xcb_atom_t compositor_ = XCB_ATOM_NONE;                 ///< the selection's name, once it was asked for
    std::optional<xcb_get_selection_owner_cookie_t> asked_; ///< who owns it
    /// Invisible windows over all of the screen but the popover, where the popover could not take the pointer at once.
    std::vector<std::uint32_t> around_;
    std::uint32_t colours_ = 0; ///< their colour map; 0 where they need none
    std::function<void()> clickedElsewhere_;
    bool hasPointer_ = false; ///< the popover, if it is a popup
    QTimer untilPointerIsFree_;
    QPointer<QWindow> popover_;

    /// Whether the popover has it now. If another program has it, tries again soon.
    bool takePointer(xcb_connection_t* connection);
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
};
