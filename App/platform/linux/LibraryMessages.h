// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Drops what GLib and the libraries above it have to say. To be called before the toolkit starts.
void dropLibraryMessages();
