// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;

/// Calls `function` on the main thread before the process is ended because the display went away: an X server of which
/// another library is the first to notice, or a Wayland compositor. To be called when Qt has started. Where
/// Qt itself is the first to notice the end of an X server, it ends the process by exit(), and this is not
/// called.
void beforeDisplayLoss(void (*function)());

/// To be told what Qt has to say, on the thread where it says it.
void noticeDisplayLoss(const QString& qtMessage);
