// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The argument with which the program benchmarks nothing and calls `printMemoryWhileLoading` with the next argument.
inline constexpr const char* loadOnly = "--load-only";

/// Prints how many bytes more were resident while and after a store loaded the history below `home`.
int printMemoryWhileLoading(const char* home);
