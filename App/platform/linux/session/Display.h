// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;

/// Chooses Qt's platform plugin for this session and tells whether there is any display. To be called before Qt starts,
/// since Qt aborts without one.
bool prepareDisplay();

/// Whether the session has a Wayland display and no X server.
bool isOnlyWayland();

/// Calls `function` on the main thread before the process is ended because the display went away: when the Wayland
/// compositor goes, or when Xlib is the first to notice the loss of the X server. When Qt is the first, it calls exit()
/// and `function` is not called. To be called once Qt has started.
void beforeDisplayLoss(void (*function)());

/// To be given every message of Qt's, on the thread where Qt sends it: one of them announces the loss of the
/// compositor.
void noticeDisplayLoss(const QString& qtMessage);
