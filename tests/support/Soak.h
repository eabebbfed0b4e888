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
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // only one of the compilers has its header
#endif

/// The memory that is allocated and not freed, in bytes.
inline double allocatedBytes() {
#ifdef VELMORA_ADDRESS_SANITIZER
    return static_cast<double>(__sanitizer_get_current_allocated_bytes());
#else
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
#endif
}

/// The process's private memory, in bytes, without unmodified pages of files: whether those are private depends on
/// which other processes have the file mapped.
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

/// The number of the process's open files.
inline std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

/// The growth from one value to the next, by the line that fits them best.
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
