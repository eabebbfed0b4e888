// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// With this argument the program benchmarks nothing, but calls `printMemoryWhileLoading` with the next argument.
inline constexpr const char* loadOnly = "--load-only";

/// Prints how many more bytes were resident while, and after, a store loaded the history below `home`.
int printMemoryWhileLoading(const char* home);
