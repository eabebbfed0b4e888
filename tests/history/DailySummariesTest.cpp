// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/FakeFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <vector>

using namespace std::chrono_literals;
using DaySummary = HistoryStore::DaySummary;

namespace {

struct DailySummariesTest : ::testing::Test {
    const Date midnight = std::chrono::sys_days{2026y / 11 / 15}; ///< of today, in UTC
    const Date now = midnight + 20h;
    FakeFiles files;
    FakeClock clock{now};
    FakeCalendar calendar;
    HistoryStore history{files, clock, calendar};
    std::vector<Sample> samples; ///< of the history

    void add(Date date, std::int64_t percent, bool charging = false) {
        samples.push_back({.t = date.time_since_epoch().count(), .p = percent, .c = charging, .a = charging});
    }
    std::vector<DaySummary> summaries(std::int64_t days) {
        history.samples.clear();
        for (const Sample& sample : samples)
            history.samples.push_back(sample);
        return history.dailySummaries(days, now);
    }
    std::vector<DaySummary> week() { return summaries(7); }
};

TEST_F(DailySummariesTest, AreNoneWithoutSamples) {
    EXPECT_TRUE(week().empty());
    add(midnight - 6 * 24h - 1s, 50);
    EXPECT_TRUE(week().empty());
}

TEST_F(DailySummariesTest, OfASingleSampleAreThatSample) {
    add(midnight + 8h, 57, true);
    EXPECT_EQ(week(), (std::vector{DaySummary{midnight, 57, 57, 57, 0}}));
}

TEST_F(DailySummariesTest, CountAnIntervalWithTheSampleThatItBeginsWith) {
    add(midnight + 8h, 40, true);
    add(midnight + 8h + 10min, 50);
    EXPECT_EQ(week(), (std::vector{DaySummary{midnight, 40, 40, 50, 10}}));
}

TEST_F(DailySummariesTest, TakeTheHighestForTheAverageWhereNoIntervalCounts) {
    for (int i = 0; i < 60; ++i)
        add(midnight + i * 20min, 20 + i, true);
    EXPECT_EQ(week(), (std::vector{DaySummary{midnight, 79, 20, 79, 0}}));
}

TEST_F(DailySummariesTest, CountIntervalsOfUpToAQuarterOfAnHour) {
    add(midnight, 40, true);
    add(midnight + 900s, 60);
    EXPECT_EQ(week().front(), (DaySummary{midnight, 40, 40, 60, 15}));
    samples.back().t += 0.001;
    EXPECT_EQ(week().front(), (DaySummary{midnight, 60, 40, 60, 0}));
}

TEST_F(DailySummariesTest, AddNothingForTwoSamplesOfOneTimeOrForTimeThatGoesBack) {
    add(midnight + 1h, 40, true);
    add(midnight + 1h, 50, true);
    add(midnight + 30min, 60, true);
    add(midnight + 35min, 70, false);
    EXPECT_EQ(week(), (std::vector{DaySummary{midnight, 60, 40, 70, 5}}));
}

TEST_F(DailySummariesTest, WeighEachChargeWithTheTimeThatItLasted) {
    add(midnight, 10);
    add(midnight + 100s, 20);
    add(midnight + 400s, 90);
    EXPECT_EQ(week().front().avgPercent, 18) << "17.5, halves go up";
}

TEST_F(DailySummariesTest, CutOffUnfinishedMinutesOfCharging) {
    add(midnight, 10, true);
    add(midnight + 59.9s, 10, false);
    EXPECT_EQ(week().front().chargingMinutes, 0);
    samples.back().t += 0.1;
    EXPECT_EQ(week().front().chargingMinutes, 1);
}

TEST_F(DailySummariesTest, CountChargingNotBeingPluggedIn) {
    add(midnight, 80);
    samples.back().a = true;
    add(midnight + 10min, 80);
    EXPECT_EQ(week().front().chargingMinutes, 0);
}

TEST_F(DailySummariesTest, GiveAnIntervalAcrossMidnightToTheDayThatItBeginsIn) {
    add(midnight - 5min, 40, true);
    add(midnight + 5min, 50);
    EXPECT_EQ(week(), (std::vector{DaySummary{midnight, 50, 50, 50, 0}, DaySummary{midnight - 24h, 40, 40, 40, 10}}));
}

TEST_F(DailySummariesTest, HaveARowForEachDayWithSamplesNewestFirst) {
    add(midnight - 6 * 24h, 10);
    add(midnight - 3 * 24h + 5h, 20);
    add(midnight + 1h, 30);
    const std::vector<DaySummary> rows = week();
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].day, midnight);
    EXPECT_EQ(rows[1].day, midnight - 3 * 24h);
    EXPECT_EQ(rows[2].day, midnight - 6 * 24h);
}

TEST_F(DailySummariesTest, OfOneDayBeginAtMidnight) {
    add(midnight - 1s, 10);
    add(midnight, 20);
    EXPECT_EQ(summaries(1), (std::vector{DaySummary{midnight, 20, 20, 20, 0}}));
}

TEST_F(DailySummariesTest, CountSamplesFromTheFutureToo) {
    add(midnight + 26h, 30);
    EXPECT_EQ(week(), (std::vector{DaySummary{midnight + 24h, 30, 30, 30, 0}}));
}

TEST_F(DailySummariesTest, AreOfLocalDays) {
    calendar.minutesEastOfUtc = -5 * 60 - 30;
    const Date localMidnight = midnight + 5h + 30min;
    add(localMidnight - 1min, 40);
    add(localMidnight + 1min, 50);
    EXPECT_EQ(week(),
              (std::vector{DaySummary{localMidnight, 50, 50, 50, 0}, DaySummary{localMidnight - 24h, 40, 40, 40, 0}}));
}

TEST_F(DailySummariesTest, FollowTheUserIntoAnotherTimeZone) {
    add(midnight + 1h, 40);
    EXPECT_EQ(week().front().day, midnight);
    calendar.minutesEastOfUtc = -120;
    EXPECT_EQ(week().front().day, midnight - 22h);
}

TEST_F(DailySummariesTest, BeginNowWhereTheCalendarKnowsNoTime) {
    calendar.knowsNoTime = true;
    add(now - 1s, 40);
    add(now, 50);
    EXPECT_EQ(week(), (std::vector{DaySummary{now, 50, 50, 50, 0}}));
}

TEST_F(DailySummariesTest, KeepLowestAndHighestInsideWhatAChargeCanBe) {
    add(midnight, 130);
    EXPECT_EQ(week().front(), (DaySummary{midnight, 130, 100, 130, 0}));
    samples.back().p = -7;
    EXPECT_EQ(week().front(), (DaySummary{midnight, 0, -7, 0, 0}));
}

TEST_F(DailySummariesTest, SurviveNumbersThatNoBatteryHas) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    add(midnight, most);
    add(midnight + 1min, most);
    EXPECT_EQ(week().front().avgPercent, most);
    samples.front().p = samples.back().p = least;
    EXPECT_EQ(week().front().avgPercent, least);
    samples.front().t = -1e300;
    samples.back().t = 1e300;
    EXPECT_EQ(week().size(), 1U);
}

} // namespace
