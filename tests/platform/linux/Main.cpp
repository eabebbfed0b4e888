// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/ViewStyle.h"

#include <QApplication>
#include <QDir>
#include <gtest/gtest.h>

/// The adapters need Qt's event loop, the windows a screen that nobody sees.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QDir::setSearchPaths(QLatin1String(glyphFolder), {QStringLiteral(VELMORA_ICONS "/hicolor/scalable/status")});
    return RUN_ALL_TESTS();
}
