// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <deque>
#include <functional>

/// Makes this process's calls that write files go wrong as told, for as long as it lives. One at a time.
class DiskFaults {
public:
    DiskFaults();
    ~DiskFaults();
    DiskFaults(const DiskFaults&) = delete;
    DiskFaults& operator=(const DiskFaults&) = delete;

    struct Write {
        int error = 0;        ///< an errno value, or 0
        std::size_t most = 0; ///< without an error, as many bytes are written at most
    };

    std::deque<Write> writes; ///< what becomes of the next write() calls to regular files; then they work
    std::deque<int> syncs;    ///< of the next fsync() calls: an errno value, or 0

    std::function<void()> beforeWrite; ///< runs before each write() to a regular file
    std::function<void()> beforeLock;  ///< runs once, before the next flock()
};
