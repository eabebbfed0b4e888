// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The name that desktops know the program by: its name on the session bus, and that of its desktop entry, its icon and
/// its AppStream component.
inline constexpr const char* applicationId = "app.velmora.Velmora";
