// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/DisplayLoss.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>

#include <dlfcn.h>

#include <atomic>
#include <cstdlib>
#include <memory>

// QUIRK: Qt's GTK theme, where the user asks for it, has a connection to the X server of its own. When GTK
// notices first that the server is gone, it ends the process by _exit(), and nothing that is registered with atexit()
// runs. Libraries notice by a handler in libX11, of which there is one in each process.

namespace {

/// As in Xlib.h, which this does not need for anything else.
using Handler = int (*)(void* display);
using SetHandler = Handler (*)(Handler handler);

std::atomic<void (*)()> lastFunction = nullptr;

int handle(void* /*display*/) {
    lastFunction.load()();
    // Xlib is in the middle of a call and must not be entered again, so no orderly exit.
    std::_Exit(EXIT_FAILURE);
}

} // namespace

void beforeDisplayLoss(void (*function)()) {
    lastFunction = function;
    // Where nobody has loaded it, nobody has a connection by it.
    void* library = ::dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr)
        return;
    if (const auto setHandler = reinterpret_cast<SetHandler>(::dlsym(library, "XSetIOErrorHandler")))
        setHandler(handle);
}

void noticeDisplayLoss(const QString& qtMessage) {
    // QUIRK: when a Wayland compositor goes away, which is how its session ends, Qt ends the process by
    // _exit(). It says so first, on the thread that notices: the one that listens to the compositor, or the main one.
    QCoreApplication* const application = QCoreApplication::instance(); // null when the program is ending already
    if (lastFunction == nullptr || application == nullptr ||
        !qtMessage.startsWith(QLatin1String("The Wayland connection ")))
        return;
    if (QThread::currentThread() == application->thread()) {
        lastFunction.load()();
        return;
    }
    constexpr int timeout = 2000; // milliseconds; the main thread may be waiting for the compositor itself
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
