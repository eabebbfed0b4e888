// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <deque>
#include <functional>

/// Makes this process's calls that write files fail as told, for the lifetime of this object. One object at a time.
class DiskFaults {
public:
    DiskFaults();
    ~DiskFaults();
    DiskFaults(const DiskFaults&) = delete;
    DiskFaults& operator=(const DiskFaults&) = delete;

    struct Write {
        int error = 0;        ///< an errno value, or 0
        std::size_t most = 0; ///< without an error, at most this many bytes are written
    };

    std::deque<Write> writes; ///< outcomes of the next write() calls to regular files; later calls work
    std::deque<int> syncs;    ///< of the next fsync() calls: an errno value, or 0

    std::function<void()> beforeWrite; ///< runs before each write() to a regular file
    std::function<void()> beforeLock;  ///< runs once, before the next flock()
};
