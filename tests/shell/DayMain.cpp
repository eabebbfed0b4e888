// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/HeapMemory.h"

#include <QApplication>
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>

/// Sets one time zone and one language, whatever the machine's are: local times and dates are compared as text. The
/// rule for summer time is given here, so that no time zone database is needed.
int main(int argc, char** argv) {
    // glibc's allocator counts the blocks in its per-thread cache as used. That cache can be switched off only before
    // the process starts.
    if (::setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 0) == 0 &&
        std::getenv("VELMORA_DAY_TESTS") == nullptr) {
        ::setenv("VELMORA_DAY_TESTS", "started", 1);
        ::execv("/proc/self/exe", argv);
    }
    giveBackLargeBlocks(); // as in the program
    testing::InitGoogleTest(&argc, argv);
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
