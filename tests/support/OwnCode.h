// SPDX-License-Identifier: GPL-3.0-or-later
// Which of the running program's code is in memory.
#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <tuple>

// The linker's names for where the program begins and where its code ends.
extern "C" const char __executable_start; // NOLINT(bugprone-reserved-identifier)
extern "C" const char etext;

/// The resident memory, in KiB.
inline long residentMemory() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    for (std::string word; rollup >> word;) {
        if (long kilobytes = 0; word == "Rss:" && rollup >> kilobytes)
            return kilobytes;
    }
    return 0;
}

/// The size of this program's code, in KiB.
inline long codeSize() {
    return (&etext - &__executable_start) / 1024;
}

/// Has all code of this program in memory; a forked process begins without.
inline void touchCode() {
    constexpr std::ptrdiff_t page = 4096;
    for (const volatile char* byte = &__executable_start; byte < &etext; byte += page)
        std::ignore = char{*byte};
}
