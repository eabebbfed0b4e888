// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Large blocks go back to the system as soon as they are freed, now and later. By itself the allocator learns from the
/// first large block that is freed to keep the next ones: the text of the history, read once and written every five
/// minutes, would stay for good.
void giveBackLargeBlocks();

/// Gives back to the system what has been freed and is not needed now. For moments after which nothing happens for
/// long.
void giveBackFreeMemory();
