// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/HeapMemory.h"

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
    // malloc_trim() does not shrink the arenas that other threads get, and QtDBus receives messages in one.
    ::mallopt(M_ARENA_MAX, 1);
#endif
}

void giveBackFreeMemory() {
#ifdef __GLIBC__
    ::malloc_trim(0);
#endif
}
