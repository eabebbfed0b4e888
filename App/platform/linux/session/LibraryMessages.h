// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Drops what GLib and the libraries above it have to say, and lets libdbus not end the program over what it complains
/// of. To be called before Qt starts.
void dropLibraryMessages();
