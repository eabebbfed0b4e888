// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/Display.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>

#include <dlfcn.h>

#include <atomic>
#include <cstdlib>
#include <memory>

namespace {

/// As in Xlib.h, which is needed for nothing else.
using Handler = int (*)(void* display);
using SetHandler = Handler (*)(Handler handler);

std::atomic<void (*)()> lastFunction = nullptr;

int handle(void* /*display*/) {
    lastFunction.load()();
    // Xlib is in the middle of a call and must not be entered again, so no orderly exit.
    std::_Exit(EXIT_FAILURE);
}

} // namespace

bool isOnlyWayland() {
    return qEnvironmentVariableIsEmpty("DISPLAY") && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

bool prepareDisplay() {
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return true;
    const bool x11 = !qEnvironmentVariableIsEmpty("DISPLAY");
    const bool wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    if (x11 && wayland) {
        // GNOME and KDE do not let a Wayland window choose its place, and the popover has to open at its item; an X11
        // window can.
        const QByteArray desktops = qgetenv("XDG_CURRENT_DESKTOP").toUpper();
        if (desktops.contains("GNOME") || desktops.contains("KDE"))
            qputenv("QT_QPA_PLATFORM", "xcb");
    }
    return x11 || wayland;
}

void beforeDisplayLoss(void (*function)()) {
    lastFunction = function;
    // QUIRK: Qt's GTK theme, where the user asks for it, has an X11 connection of its own. When GTK notices first that
    // the X server is gone, it calls _exit(), which runs nothing that is registered with atexit(). Xlib has one handler
    // for this in each process. If libX11 is not loaded, nothing here has an X11 connection through it.
    void* library = ::dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr)
        return;
    if (const auto setHandler = reinterpret_cast<SetHandler>(::dlsym(library, "XSetIOErrorHandler")))
        setHandler(handle);
}

void noticeDisplayLoss(const QString& qtMessage) {
    // QUIRK: when the Wayland compositor goes away, which is how its session ends, Qt calls _exit(). It logs this
    // first, on the thread that notices: the one that listens to the compositor, or the main thread.
    QCoreApplication* const application = QCoreApplication::instance(); // null when the program is ending already
    if (lastFunction == nullptr || application == nullptr ||
        !qtMessage.startsWith(QLatin1String("The Wayland connection ")))
        return;
    if (QThread::currentThread() == application->thread()) {
        lastFunction.load()();
        return;
    }
    constexpr int timeout = 5000; // milliseconds; the main thread waits for a slow disk, or even for the compositor
    const auto done = std::make_shared<QSemaphore>();
    QMetaObject::invokeMethod(
        application,
        [done] {
            lastFunction.load()();
            done->release();
        },
        Qt::QueuedConnection);
    done->tryAcquire(1, timeout);
}
