// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DisplayLoss.h"

#include <dlfcn.h>

#include <cstdlib>

// QUIRK: the toolkit's GTK theme, where the user asks for it, has a connection to the X server of its own. When GTK
// notices first that the server is gone, it ends the process by _exit(), and nothing that is registered with atexit()
// runs. Libraries notice by a handler in libX11, of which there is one in each process.

namespace {

/// As in Xlib.h, which this does not need for anything else.
using Handler = int (*)(void* display);
using SetHandler = Handler (*)(Handler handler);

void (*lastFunction)() = nullptr;

int handle(void* /*display*/) {
    lastFunction();
    // The library is in the middle of something and must not be called again: no orderly exit.
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
