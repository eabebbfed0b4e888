// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/HeapMemory.h"

#include <cstdlib>
#ifdef __GLIBC__
#include <malloc.h>
#endif

void giveBackLargeBlocks() {
#ifdef __GLIBC__
    // malloc's initial value; what matters is that setting it stops malloc from changing it.
    constexpr int bytes = 128 * 1024;
    ::mallopt(M_MMAP_THRESHOLD, bytes);
    ::mallopt(M_TRIM_THRESHOLD, bytes);
#endif
}

void giveBackFreeMemory() {
#ifdef __GLIBC__
    ::malloc_trim(0);
#endif
}
