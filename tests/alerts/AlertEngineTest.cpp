// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/AlertEngine.h"

#include <gtest/gtest.h>

namespace {

TEST(AlertEngine, AFreshOneHasGivenNothing) {
    const AlertEngine engine;
    EXPECT_TRUE(engine.suppressed.empty());
    EXPECT_EQ(engine.chargeSent, 0);
    EXPECT_FALSE(engine.lowSent);
    EXPECT_FALSE(engine.longSent);
    EXPECT_FALSE(engine.lowPowerSent);
}

TEST(AlertEngine, TheLastChargeReminderOfAFreshOneLiesBeforeEveryInstantThatAClockTells) {
    const AlertEngine engine;
    EXPECT_LT(engine.chargeLast, Date(Duration(-1e15)));
}

} // namespace
