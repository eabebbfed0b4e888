// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Drops the log messages of GLib and the libraries above it, and keeps libdbus from aborting over a warning. To be
/// called before Qt starts.
void dropLibraryMessages();
