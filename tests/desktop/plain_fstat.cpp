// SPDX-License-Identifier: GPL-3.0-or-later
// Keeps umockdev and libfaketime from deadlocking where both are preloaded. When libfaketime first needs the time, it
// reads its file, once. umockdev from 0.19 on calls `fstat` on each file that is opened, and libfaketime's `fstat`
// waits until that first reading is over, which then never happens. This `fstat` asks the kernel and waits for nothing.
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" int fstat(int descriptor, struct stat* status) noexcept {
    return static_cast<int>(::syscall(SYS_fstat, descriptor, status));
}
