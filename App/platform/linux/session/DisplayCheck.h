// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Chooses Qt's platform for this session, and tells whether there is any display to show something on. To be
/// called before Qt starts, which ends the process by abort when it finds none.
bool prepareDisplay();

/// Whether the session has a Wayland display and no X server.
bool isOnlyWayland();
