// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/CodeMemory.h"

#include "support/OwnCode.h"

#include <QFrame>
#include <QString>
#include <gtest/gtest.h>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <tuple>

TEST(CodeMemory, IsGivenBackAndComesBack) {
    touchCode();
    const QString before = QStringLiteral("%1").arg(0.5, 0, 'f', 3);
    const long all = residentMemory();
    giveBackCode();
    EXPECT_LT(residentMemory(), all - codeSize() / 2);
    EXPECT_EQ(QStringLiteral("%1").arg(0.5, 0, 'f', 3), before);
    EXPECT_THROW(std::ignore = std::stoi("x"), std::invalid_argument) << "what the linker wrote is still there";
}

TEST(CodeMemory, OfWindowsStays) {
    const QSize known = QFrame().sizeHint(); // uses the library
    const long windows = residentMemory("libQt6Widgets.so");
    const long core = residentMemory("libQt6Core.so");
    giveBackCode();
    EXPECT_GT(windows, 0);
    EXPECT_GE(residentMemory("libQt6Widgets.so"), windows);
    EXPECT_LT(residentMemory("libQt6Core.so"), core);
    EXPECT_EQ(QFrame().sizeHint(), known);
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
