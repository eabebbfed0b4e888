// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/DisplayCheck.h"

#include <QByteArray>
#include <QtGlobal>

bool isOnlyWayland() {
    return qEnvironmentVariableIsEmpty("DISPLAY") && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

bool prepareDisplay() {
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return true;
    const bool x11 = !qEnvironmentVariableIsEmpty("DISPLAY");
    const bool wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    if (x11 && wayland) {
        // On the large Wayland desktops a window that is to stand beside its item must be an X11 window: Wayland gives
        // a program no say in where its windows are.
        const QByteArray desktops = qgetenv("XDG_CURRENT_DESKTOP").toUpper();
        if (desktops.contains("GNOME") || desktops.contains("KDE"))
            qputenv("QT_QPA_PLATFORM", "xcb");
    }
    return x11 || wayland;
}
