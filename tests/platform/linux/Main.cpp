// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>
#include <gtest/gtest.h>

/// The adapters need the toolkit's event loop.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
