// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/LibraryMessages.h"

#include <glib.h>

#include <cstdlib>

namespace {

/// Stop here in the debugger to see what GLib and GTK complain about.
GLogWriterOutput drop(GLogLevelFlags /*level*/, const GLogField* /*fields*/, gsize /*count*/, gpointer /*data*/) {
    return G_LOG_WRITER_HANDLED;
}

} // namespace

void dropLibraryMessages() {
    // QUIRK: libdbus aborts when one of its functions is called with wrong arguments. QtDBus does that when a program
    // connects to a service's signal just after the bus has gone: it waits for the reply to a call that was not sent.
    ::setenv("DBUS_FATAL_WARNINGS", "0", 1);
    // QUIRK: where the user asks Qt for its GTK theme, GTK prints warnings, for instance about a missing locale.
    g_log_set_writer_func(drop, nullptr, nullptr);
}
