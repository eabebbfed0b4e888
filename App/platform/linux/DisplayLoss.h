// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Calls `function` before the process is ended because the X server went away. To be called when the toolkit has
/// started. Where the toolkit itself is the first to notice, it ends the process by exit(), and this is not called.
void beforeDisplayLoss(void (*function)());
