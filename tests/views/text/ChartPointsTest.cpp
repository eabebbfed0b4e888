// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/ChartPoints.h"

#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/FakeFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <vector>

using namespace std::chrono_literals;

namespace {

struct ChartPointsTest : ::testing::Test {
    const Date start{Duration(1'700'000'000)};
    FakeFiles files;
    FakeClock clock{start};
    FakeCalendar calendar;
    HistoryStore history{files, clock, calendar};
    std::vector<Sample> samples; ///< of the history

    void add(Duration after, std::int64_t percent = 50) {
        samples.push_back({.t = (start + after).time_since_epoch().count(), .p = percent, .c = false, .a = false});
    }
    void addMinutes(int count) {
        for (int i = 0; i < count; ++i)
            add(i * 1min);
    }
    std::vector<Point> all() {
        history.samples.clear();
        for (const Sample& sample : samples)
            history.samples.push_back(sample);
        return points(history, start);
    }
    std::vector<std::int64_t> ids() {
        std::vector<std::int64_t> ids;
        for (const Point& point : all())
            ids.push_back(point.id);
        return ids;
    }
};

TEST_F(ChartPointsTest, AreNoneWithoutSamples) {
    EXPECT_TRUE(all().empty());
    add(-1s);
    EXPECT_TRUE(all().empty());
}

TEST_F(ChartPointsTest, AreTheSamplesOfTheWindow) {
    add(-1s, 1);
    add(0s, 80);
    add(1min, 81);
    EXPECT_EQ(all(), (std::vector<Point>{{0, start, 80, 0}, {1, start + 1min, 81, 0}}));
}

TEST_F(ChartPointsTest, AreAllOfThemBelowSixHundred) {
    addMinutes(299);
    EXPECT_EQ(all().size(), 299U);
    addMinutes(1);
    EXPECT_EQ(all().size(), 300U);
    samples.clear();
    addMinutes(599);
    EXPECT_EQ(all().size(), 599U);
}

TEST_F(ChartPointsTest, AreThinnedFromSixHundredOnAndKeepTheLast) {
    addMinutes(600);
    const std::vector<std::int64_t> kept = ids();
    ASSERT_EQ(kept.size(), 301U);
    for (std::size_t i = 0; i < 300; ++i)
        EXPECT_EQ(kept[i], static_cast<std::int64_t>(2 * i));
    EXPECT_EQ(kept.back(), 599);
}

TEST_F(ChartPointsTest, AreNeverMany) {
    addMinutes(10080);
    EXPECT_EQ(all().size(), 307U) << "every 33rd and the last";
    EXPECT_EQ(all().back().id, 10079);
}

TEST_F(ChartPointsTest, BeginANewSegmentAfterAGap) {
    add(0s);
    add(960s);
    add(960s + 961s);
    EXPECT_EQ(all().at(1).seg, 0);
    EXPECT_EQ(all().at(2).seg, 1);
}

TEST_F(ChartPointsTest, AllowALongerGapWhereSamplesAreLeftOut) {
    addMinutes(600);
    // Every second sample is kept, and the last one, which is not a second one.
    samples.back().t = (start + 598min + 1020s).time_since_epoch().count();
    EXPECT_EQ(all().back().seg, 0);
    samples.back().t += 1;
    EXPECT_EQ(all().back().seg, 1);
}

TEST_F(ChartPointsTest, StayInTheirSegmentWhenTheClockGoesBack) {
    add(0s);
    add(1h);
    add(30min);
    EXPECT_EQ(all().at(1).seg, 1);
    EXPECT_EQ(all().at(2).seg, 1);
}

TEST_F(ChartPointsTest, AreToldInWords) {
    add(0s, 64);
    add(1min, 20);
    add(2min, 91);
    EXPECT_EQ(chartDescription(all(), 1), "Charge of the last 24 hours, lowest 20 %, highest 91 %");
    EXPECT_EQ(chartDescription(all(), 7), "Charge of the last 7 days, lowest 20 %, highest 91 %");
}

TEST(ChartMarks, StandAtEverySixthHourOfADay) {
    FakeCalendar calendar;
    calendar.minutesEastOfUtc = 60;
    const Date midnight = std::chrono::sys_days{std::chrono::year(2026) / 11 / 14} + 23h;
    EXPECT_EQ(timeMarks(midnight - 10h, midnight + 14h, calendar),
              (std::vector<Date>{midnight - 6h, midnight, midnight + 6h, midnight + 12h}));
    EXPECT_EQ(timeMarks(midnight, midnight + 24h, calendar).size(), 5U) << "both ends are marked";
}

TEST(ChartMarks, StandAtTheMidnightsOfAWeek) {
    const FakeCalendar calendar;
    const Date midnight = std::chrono::sys_days{std::chrono::year(2026) / 11 / 15};
    const std::vector<Date> marks = timeMarks(midnight + 1h - 7 * 24h, midnight + 1h, calendar);
    ASSERT_EQ(marks.size(), 7U);
    EXPECT_EQ(marks.front(), midnight - 6 * 24h);
    EXPECT_EQ(marks.back(), midnight);
}

TEST(ChartMarks, AreNoneWhereTheCalendarKnowsNoTime) {
    FakeCalendar calendar;
    calendar.knowsNoTime = true;
    EXPECT_TRUE(timeMarks(Date(Duration(0)), Date(Duration(86400)), calendar).empty());
}

TEST(ChartText, NamesTheLimit) {
    EXPECT_EQ(limitText(80), "Limit 80%");
    EXPECT_EQ(limitText(-5), "Limit -5%");
}

} // namespace
