// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/DiskFaults.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

DiskFaults* current = nullptr;

bool isRegular(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

template <class Fault>
Fault next(std::deque<Fault>& faults, Fault none) {
    if (faults.empty())
        return none;
    const Fault fault = faults.front();
    faults.pop_front();
    return fault;
}

} // namespace

DiskFaults::DiskFaults() {
    current = this;
}

DiskFaults::~DiskFaults() {
    current = nullptr;
}

// These take the place of the C library's functions of the same names.

extern "C" ssize_t write(int descriptor, const void* bytes, size_t count) {
    if (current != nullptr && descriptor > STDERR_FILENO && isRegular(descriptor)) {
        if (current->beforeWrite)
            current->beforeWrite();
        const auto fault = next(current->writes, {.error = 0, .most = count});
        if (fault.error != 0) {
            errno = fault.error;
            return -1;
        }
        count = std::min(count, fault.most);
    }
    return ::syscall(SYS_write, descriptor, bytes, count);
}

extern "C" int fsync(int descriptor) {
    if (current != nullptr) {
        if (const int error = next(current->syncs, 0)) {
            errno = error;
            return -1;
        }
    }
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

extern "C" int flock(int descriptor, int operation) {
    if (current != nullptr) {
        if (const auto before = std::exchange(current->beforeLock, nullptr))
            before();
    }
    return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}
