// SPDX-License-Identifier: GPL-3.0-or-later
// Which of the running program's code is in memory.
#pragma once

#include <cstddef>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
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

/// The resident memory of a library by part of its file's name, in KiB.
inline long residentMemory(std::string_view library) {
    std::ifstream mappings("/proc/self/smaps");
    bool isOfLibrary = false;
    long sum = 0;
    for (std::string line; std::getline(mappings, line);) {
        std::istringstream words(line);
        std::string key;
        long kilobytes = 0;
        if (words >> key; !key.ends_with(':')) // the addresses, with which each mapping begins
            isOfLibrary = line.find(library) != std::string::npos;
        else if (isOfLibrary && key == "Rss:" && words >> kilobytes)
            sum += kilobytes;
    }
    return sum;
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
