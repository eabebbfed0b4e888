// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ChangeDebouncer.h"

#include "support/FakeMainLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <memory>
#include <vector>

using namespace std::chrono_literals;

namespace {

using Instants = std::vector<double>;

struct ChangeDebouncerTest : ::testing::Test {
    FakeClock clock;
    FakeMainLoop loop{clock};
    const Duration start = clock.uptime();
    Instants reports; ///< seconds after the start, to the millisecond
    Instants looks;
    bool explains = false; ///< whether what is read at a report explains the event
    bool differs = false;  ///< whether a look finds a change
    std::function<void()> duringReport;
    std::unique_ptr<ChangeDebouncer> changes = std::make_unique<ChangeDebouncer>(
        loop, clock,
        [this] {
            reports.push_back(instant());
            if (duringReport)
                duringReport();
            return explains;
        },
        [this] {
            looks.push_back(instant());
            return differs;
        });

    double instant() const { return std::round((clock.uptime() - start).count() * 1000) / 1000; }
    void advanceTo(double seconds) { loop.advance(start + Duration(seconds) - clock.uptime()); }
    void eventAt(double seconds) {
        advanceTo(seconds);
        changes->event();
    }
};

TEST_F(ChangeDebouncerTest, AreSilentWithoutAnEvent) {
    loop.advance(1h);
    EXPECT_TRUE(reports.empty());
    EXPECT_TRUE(looks.empty());
    EXPECT_EQ(loop.waiting(), 0U);
}

TEST_F(ChangeDebouncerTest, DropsTheReadingsThatWereDueBeforeASleep) {
    differs = true;
    eventAt(0);
    advanceTo(1.5);
    EXPECT_EQ(looks, Instants{1});
    clock.suspend(2h);
    loop.advance(1h);
    EXPECT_EQ(looks, Instants{1}) << "what they would find is for the refresh after waking";
    EXPECT_EQ(reports, (Instants{0, 1}));
    looks.clear();
    const double woken = instant();
    changes->event();
    loop.advance(20s);
    EXPECT_EQ(looks, (Instants{woken + 1, woken + 2, woken + 5, woken + 15})) << "an event after waking counts";
}

TEST_F(ChangeDebouncerTest, CountsAnEventAfterASleepAtOnce) {
    eventAt(0);
    eventAt(0.5);
    clock.suspend(2h); // a report is due, and four readings
    const double woken = instant();
    changes->event();
    EXPECT_EQ(reports, (Instants{0, woken}));
    loop.advance(20s);
    EXPECT_EQ(reports, (Instants{0, woken})) << "the one from before the sleep is dropped";
    EXPECT_EQ(looks, (Instants{woken + 1, woken + 2, woken + 5, woken + 15}));
}

TEST_F(ChangeDebouncerTest, ReadsAgainAfterASleepWhenAsked) {
    eventAt(0);
    advanceTo(6); // the last reading is to come in nine seconds
    looks.clear();
    clock.suspend(2h);
    loop.advance(3s);
    const double asked = instant();
    changes->settle();
    loop.advance(20s);
    EXPECT_EQ(looks, (Instants{asked + 1, asked + 2, asked + 5, asked + 15}));
}

TEST_F(ChangeDebouncerTest, PassTheFirstEventOnAtOnce) {
    changes->event();
    EXPECT_EQ(reports, Instants{0});
}

TEST(ChangeDebouncer, PassTheFirstEventOnAtOnceJustAfterTheMachineStartedToo) {
    FakeClock clock(Date(Duration(1'700'000'000)), Duration(0.25));
    FakeMainLoop loop(clock);
    int reports = 0;
    ChangeDebouncer changes(
        loop, clock,
        [&] {
            ++reports;
            return false;
        },
        [] { return false; });
    changes.event();
    EXPECT_EQ(reports, 1);
}

TEST_F(ChangeDebouncerTest, GatherTheRestOfABurstUntilTheSecondIsOver) {
    eventAt(0);
    eventAt(0.2);
    eventAt(0.9);
    EXPECT_EQ(reports, Instants{0});
    advanceTo(0.999);
    EXPECT_EQ(reports, Instants{0});
    advanceTo(60);
    EXPECT_EQ(reports, (Instants{0, 1}));
}

TEST_F(ChangeDebouncerTest, PassAnEventOnAtOnceWhenTheSecondIsOver) {
    eventAt(0);
    eventAt(1);
    EXPECT_EQ(reports, (Instants{0, 1}));
    eventAt(2.5);
    EXPECT_EQ(reports, (Instants{0, 1, 2.5}));
}

TEST_F(ChangeDebouncerTest, GoOutOnceASecondInAStorm) {
    differs = true; // every look would find a change to report
    for (int event = 0; event < 2000; ++event)
        eventAt(event * 0.005);
    advanceTo(10);
    EXPECT_EQ(reports, (Instants{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_TRUE(looks.empty());
}

TEST_F(ChangeDebouncerTest, LookAgainFourTimesAfterAReportAndThenAreQuiet) {
    eventAt(0);
    loop.advance(1h);
    EXPECT_EQ(looks, (Instants{1, 2, 5, 15}));
    EXPECT_EQ(reports, Instants{0});
    EXPECT_EQ(loop.waiting(), 0U);
}

TEST_F(ChangeDebouncerTest, LookAgainOnceAfterAReportThatExplainsTheEvent) {
    explains = true;
    eventAt(0);
    eventAt(2);
    loop.advance(1h);
    EXPECT_EQ(looks, Instants{3});
    EXPECT_EQ(reports, (Instants{0, 2}));
    EXPECT_EQ(loop.waiting(), 0U);
}

TEST_F(ChangeDebouncerTest, AnExplainedEventDoesNotEndTheLooksOfOneThatIsNot) {
    eventAt(0);
    explains = true;
    eventAt(1.5);
    loop.advance(1h);
    EXPECT_EQ(looks, (Instants{1, 2, 5, 15}));
    EXPECT_EQ(reports, (Instants{0, 1.5}));
}

TEST_F(ChangeDebouncerTest, LookAgainFourTimesAfterAReportThatAsksForItThoughItExplainsTheEvent) {
    explains = true;
    duringReport = [this] { changes->settle(); };
    eventAt(0);
    loop.advance(1h);
    EXPECT_EQ(looks, (Instants{1, 2, 5, 15}));
}

TEST_F(ChangeDebouncerTest, TellWhatALookFinds) {
    eventAt(0);
    advanceTo(1.5);
    differs = true;
    advanceTo(3);
    differs = false;
    loop.advance(1h);
    EXPECT_EQ(reports, (Instants{0, 2}));
    EXPECT_EQ(looks, (Instants{1, 2, 5, 15}));
}

TEST_F(ChangeDebouncerTest, EveryLookThatFindsSomethingTellsIt) {
    differs = true;
    eventAt(0);
    loop.advance(1h);
    EXPECT_EQ(reports, (Instants{0, 1, 2, 5, 15}));
    EXPECT_EQ(looks, (Instants{1, 2, 5, 15}));
}

TEST_F(ChangeDebouncerTest, ANewReportBeginsTheLooksAnew) {
    eventAt(0);
    eventAt(3);
    loop.advance(1h);
    EXPECT_EQ(looks, (Instants{1, 2, 4, 5, 8, 18}));
}

TEST_F(ChangeDebouncerTest, ALookIsLeftOutWhileAReportIsDue) {
    differs = true;
    eventAt(0);
    eventAt(0.5);
    advanceTo(1.5);
    EXPECT_EQ(reports, (Instants{0, 1}));
    EXPECT_TRUE(looks.empty());
    advanceTo(2);
    EXPECT_EQ(looks, Instants{2});
}

// A listener reads everything; two readings within a second gain nothing, whatever caused them.
TEST_F(ChangeDebouncerTest, AnEventJustAfterALookThatToldSomethingWaitsForTheSecondToPass) {
    differs = true;
    eventAt(0);
    advanceTo(5.05);
    ASSERT_EQ(reports, (Instants{0, 1, 2, 5}));
    differs = false;
    eventAt(5.1);
    advanceTo(5.9);
    EXPECT_EQ(reports, (Instants{0, 1, 2, 5}));
    advanceTo(7);
    EXPECT_EQ(reports, (Instants{0, 1, 2, 5, 6}));
}

TEST_F(ChangeDebouncerTest, AnEventJustAfterTheFirstLookOfASettlingWaitsToo) {
    differs = true;
    changes->settle();
    advanceTo(1.2);
    ASSERT_EQ(reports, Instants{1});
    changes->event();
    EXPECT_EQ(reports, Instants{1});
    advanceTo(2.05);
    EXPECT_EQ(reports, (Instants{1, 2}));
}

TEST_F(ChangeDebouncerTest, ALookJustAfterAReportBelongsToTheNewReport) {
    differs = true;
    eventAt(0);
    eventAt(4.9);
    reports.clear();
    advanceTo(5.5);
    EXPECT_TRUE(reports.empty());
    advanceTo(5.9);
    EXPECT_EQ(reports, Instants{5.9});
}

TEST_F(ChangeDebouncerTest, SettlingLooksWithoutAnEvent) {
    changes->settle();
    EXPECT_TRUE(reports.empty());
    differs = true;
    loop.advance(1h);
    EXPECT_EQ(looks, (Instants{1, 2, 5, 15}));
    EXPECT_EQ(reports, (Instants{1, 2, 5, 15}));
}

TEST_F(ChangeDebouncerTest, SettlingDoesNotPutOffLooksThatAreOnTheirWay) {
    eventAt(0);
    for (const double seconds : {0.5, 1.5, 3.0, 4.9, 14.9}) {
        advanceTo(seconds);
        changes->settle();
    }
    loop.advance(1h);
    EXPECT_EQ(looks, (Instants{1, 2, 5, 15}));
}

TEST_F(ChangeDebouncerTest, SettlingLooksAgainWhenTheLooksAreOver) {
    eventAt(0);
    advanceTo(20);
    looks.clear();
    changes->settle();
    loop.advance(1h);
    EXPECT_EQ(looks, (Instants{21, 22, 25, 35}));
}

// A listener reads at once, and asks for another look if that reading is unsettled.
TEST_F(ChangeDebouncerTest, SettlingFromWithinAReportWorks) {
    duringReport = [this] {
        if (reports.size() < 3)
            changes->settle();
    };
    eventAt(0);
    EXPECT_EQ(reports, Instants{0});
    advanceTo(14);
    EXPECT_EQ(looks, (Instants{1, 2, 5}));
    differs = true;
    advanceTo(16.5);
    EXPECT_EQ(reports, (Instants{0, 15, 16}));
    differs = false;
    loop.advance(1h);
    EXPECT_EQ(looks, (Instants{1, 2, 5, 15, 16, 17, 20, 30}));
}

TEST_F(ChangeDebouncerTest, AnEventEndsTheLooksOfASettlingThatIsOnItsWay) {
    changes->settle();
    eventAt(0.5);
    loop.advance(1h);
    EXPECT_EQ(reports, Instants{0.5});
    EXPECT_EQ(looks, (Instants{1.5, 2.5, 5.5, 15.5}));
}

TEST_F(ChangeDebouncerTest, NothingComesOnceTheyAreGone) {
    differs = true;
    eventAt(0);
    eventAt(0.5);
    changes.reset();
    loop.advance(1h);
    EXPECT_EQ(reports, Instants{0});
    EXPECT_TRUE(looks.empty());
}

TEST_F(ChangeDebouncerTest, SleepCountsTowardsTheSecond) {
    eventAt(0);
    clock.suspend(1h);
    changes->event();
    EXPECT_EQ(reports, (Instants{0, 3600}));
}

} // namespace
