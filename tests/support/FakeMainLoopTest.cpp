// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeMainLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

struct FakeMainLoopTest : ::testing::Test {
    FakeClock clock;
    FakeMainLoop loop{clock};
    std::vector<double> instants; ///< seconds after the start

    MainLoop::Task noteInstant() {
        return [this, start = clock.uptime()] { instants.push_back((clock.uptime() - start).count()); };
    }
};

TEST_F(FakeMainLoopTest, RunsTasksAtTheirInstantInTheOrderOfTheInstants) {
    loop.after(3s, noteInstant());
    loop.after(1s, noteInstant());
    loop.after(2s, noteInstant());
    loop.advance(2500ms);
    EXPECT_EQ(instants, (std::vector{1.0, 2.0}));
    loop.advance(500ms);
    EXPECT_EQ(instants, (std::vector{1.0, 2.0, 3.0}));
}

TEST_F(FakeMainLoopTest, RunsTasksOfOneInstantInTheOrderInWhichTheyWereGiven) {
    std::string order;
    loop.async([&] {
        order += 'a';
        loop.async([&] { order += 'c'; });
    });
    loop.async([&] { order += 'b'; });
    EXPECT_EQ(order, "");
    loop.runDue();
    EXPECT_EQ(order, "abc");
}

TEST_F(FakeMainLoopTest, RepeatsUntilTheTimerIsDestroyed) {
    auto timer = loop.repeat(60s, 10s, noteInstant());
    loop.advance(2min);
    EXPECT_EQ(instants, (std::vector{60.0, 120.0}));
    timer.reset();
    loop.advance(1h);
    EXPECT_EQ(instants.size(), 2U);
}

TEST_F(FakeMainLoopTest, TimersAreNoLaterThanTheyTolerate) {
    loop.lateness = 1h;
    const auto timer = loop.repeat(60s, 10s, noteInstant());
    loop.advance(131s);
    EXPECT_EQ(instants, (std::vector{70.0, 130.0}));
}

TEST_F(FakeMainLoopTest, WhatWaitsDoesNotGetCloserWhileTheMachineSleeps) {
    loop.after(3s, noteInstant());
    clock.suspend(1h);
    loop.advance(2s);
    EXPECT_TRUE(instants.empty());
    loop.advance(1s);
    EXPECT_EQ(instants, (std::vector{3603.0}));
}

TEST(FakeClock, TellsSleepApartFromTheTimeAwake) {
    FakeClock clock(Date(100s), 50s);
    clock.pass(10s);
    clock.suspend(30s);
    EXPECT_EQ(clock.now(), Date(140s));
    EXPECT_EQ(clock.uptime(), Duration(90));
    EXPECT_EQ(clock.slept(), Duration(30));
    clock.setNow(Date(7s));
    clock.pass(1s);
    EXPECT_EQ(clock.now(), Date(8s));
    EXPECT_EQ(clock.uptime(), Duration(91));
}

} // namespace
