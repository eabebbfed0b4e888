// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <malloc.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELMORA_ADDRESS_SANITIZER
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define VELMORA_ADDRESS_SANITIZER
#endif
#ifdef VELMORA_ADDRESS_SANITIZER
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // its header comes with one compiler only
#endif

/// What the program has allocated and not given back, in bytes.
inline double allocatedBytes() {
#ifdef VELMORA_ADDRESS_SANITIZER
    return static_cast<double>(__sanitizer_get_current_allocated_bytes());
#else
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
#endif
}

/// What this process alone keeps in memory, in bytes; not what is only its copy of a file, which depends on whoever
/// else has that file open.
inline double privateBytes() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    double bytes = 0;
    for (std::string word; rollup >> word;) {
        double kilobytes = 0;
        if (word == "Private_Dirty:" && rollup >> kilobytes)
            bytes += kilobytes * 1024;
    }
    return bytes;
}

/// How many files it has open.
inline std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

/// How much the values grow from one to the next, by the line that fits them best.
inline double slope(const std::vector<double>& values) {
    const auto count = static_cast<double>(values.size());
    const double middle = (count - 1) / 2;
    double products = 0;
    double squares = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double x = static_cast<double>(i) - middle;
        products += x * values[i];
        squares += x * x;
    }
    return products / squares;
}
