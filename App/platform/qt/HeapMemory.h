// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Has malloc return large blocks to the system as soon as they are freed, from now on. By default glibc's malloc
/// learns from the first large block that is freed to keep the next ones: the text of the history, read once and
/// written every five minutes, would stay for good.
void giveBackLargeBlocks();

/// Returns freed memory that is not needed now to the system. For moments after which nothing happens for a long time.
void giveBackFreeMemory();
