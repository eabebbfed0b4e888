// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/PanelDepth.h"

#include <gtest/gtest.h>

TEST(PanelDepth, IsWhatIsNotFreeInWholePixels) {
    EXPECT_EQ(panelDepth(0, 1), 0);
    EXPECT_EQ(panelDepth(26, 1), 26);
    EXPECT_EQ(panelDepth(64, 1), 64);
    EXPECT_EQ(panelDepth(128, 2), 64);
    EXPECT_EQ(panelDepth(55, 1.5), 37);
}

TEST(PanelDepth, IsNothingWhereTheAreaEndsWithAnotherScreen) {
    EXPECT_EQ(panelDepth(-200, 1), 0);
    EXPECT_EQ(panelDepth(65, 1), 0);
    EXPECT_EQ(panelDepth(225, 1), 0);
    EXPECT_EQ(panelDepth(130, 2), 0);
    EXPECT_EQ(panelDepth(-4e9, 1), 0);
    EXPECT_EQ(panelDepth(4e9, 0.5), 0);
}
