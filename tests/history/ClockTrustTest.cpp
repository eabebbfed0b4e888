// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/ClockTrust.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace std::chrono_literals;

namespace {

struct ClockTrustTest : ::testing::Test {
    FakeClock clock;
    ClockTrust trust{clock};
};

TEST_F(ClockTrustTest, IsGivenToAClockThatRunsEvenly) {
    EXPECT_TRUE(trust.isGiven());
    clock.pass(40 * 24h);
    EXPECT_TRUE(trust.isGiven());
    clock.suspend(40 * 24h);
    EXPECT_TRUE(trust.isGiven());
}

TEST_F(ClockTrustTest, IsLostByAJumpOfMoreThanADayEitherWay) {
    for (const Duration jump : {Duration(24h + 1s), Duration(-24h - 1s)}) {
        FakeClock jumping;
        ClockTrust lost(jumping);
        jumping.setNow(jumping.now() + jump);
        EXPECT_FALSE(lost.isGiven());
    }
    clock.setNow(clock.now() + 24h);
    EXPECT_TRUE(trust.isGiven());
    clock.setNow(clock.now() + 1s);
    EXPECT_FALSE(trust.isGiven()) << "several small jumps are one large one";
}

TEST_F(ClockTrustTest, ComesBackAfterADayAwakeInWhichTheClockRanEvenly) {
    clock.setNow(clock.now() + 40 * 24h);
    EXPECT_FALSE(trust.isGiven());
    clock.pass(23h);
    clock.suspend(10 * 24h);
    EXPECT_FALSE(trust.isGiven()) << "asleep nobody notices that the clock is wrong";
    clock.setNow(clock.now() - 40 * 24h);
    EXPECT_FALSE(trust.isGiven());
    clock.pass(24h - 1s);
    EXPECT_FALSE(trust.isGiven());
    clock.pass(1s);
    EXPECT_TRUE(trust.isGiven());
}

TEST_F(ClockTrustTest, IsLostByAnyOtherReasonForAsLong) {
    trust.doubt();
    EXPECT_FALSE(trust.isGiven());
    clock.pass(24h);
    EXPECT_TRUE(trust.isGiven());
}

} // namespace
