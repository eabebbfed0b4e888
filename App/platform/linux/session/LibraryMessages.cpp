// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/LibraryMessages.h"

#include <dlfcn.h>

#include <cstddef>
#include <cstdlib>

// QUIRK: for a user who asks for it Qt takes its looks from GTK, which complains to the terminal, of a locale
// that is not installed for one. Qt has GLib in it, so that this needs no library of its own.

namespace {

/// As in GLib's header, which this does not need for anything else. Everything comes here in the end, by whatever of
/// its functions it is said.
using Writer = int (*)(int level, const void* fields, std::size_t count, void* data);
using SetWriter = void (*)(Writer writer, void* data, void (*freeData)(void*));

/// Stop here in the debugger to see what they complain about.
int drop(int /*level*/, const void* /*fields*/, std::size_t /*count*/, void* /*data*/) {
    constexpr int handled = 1;
    return handled;
}

} // namespace

void dropLibraryMessages() {
    // QUIRK: libdbus aborts when one of its functions is called with wrong arguments. QtDBus does that when a program
    // connects to a service's signal just after the bus has gone: it waits for the reply to a call that was not sent.
    ::setenv("DBUS_FATAL_WARNINGS", "0", 1);
    void* library = ::dlopen("libglib-2.0.so.0", RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr)
        return;
    if (const auto setWriter = reinterpret_cast<SetWriter>(::dlsym(library, "g_log_set_writer_func")))
        setWriter(drop, nullptr, nullptr);
}
