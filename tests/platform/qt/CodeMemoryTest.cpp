// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/CodeMemory.h"

#include <QString>
#include <gtest/gtest.h>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <tuple>

// The linker's names for where the program begins and where its code ends.
extern "C" const char __executable_start; // NOLINT(bugprone-reserved-identifier)
extern "C" const char etext;

namespace {

/// The resident memory, in KiB.
long residentMemory() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    for (std::string word; rollup >> word;) {
        if (long kilobytes = 0; word == "Rss:" && rollup >> kilobytes)
            return kilobytes;
    }
    return 0;
}

/// The size of this program's code, in KiB.
long codeSize() {
    return (&etext - &__executable_start) / 1024;
}

/// Has all code of this program in memory; a forked process begins without.
void touchCode() {
    constexpr std::ptrdiff_t page = 4096;
    for (const volatile char* byte = &__executable_start; byte < &etext; byte += page)
        std::ignore = char{*byte};
}

} // namespace

TEST(CodeMemory, IsGivenBackAndComesBack) {
    touchCode();
    const QString before = QStringLiteral("%1").arg(0.5, 0, 'f', 3);
    const long all = residentMemory();
    giveBackCode();
    EXPECT_LT(residentMemory(), all - codeSize() / 2);
    EXPECT_EQ(QStringLiteral("%1").arg(0.5, 0, 'f', 3), before);
    EXPECT_THROW(std::ignore = std::stoi("x"), std::invalid_argument) << "what the linker wrote is still there";
}

TEST(CodeMemory, StaysUnderADebuggerWhoseBreakpointsAreInIt) {
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isTraced = ::ptrace(PTRACE_TRACEME) == 0;
        touchCode();
        const long all = residentMemory();
        giveBackCode();
        ::_exit(isTraced && residentMemory() >= all ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}
