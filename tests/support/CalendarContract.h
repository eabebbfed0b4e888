// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Calendar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

/// What every calendar must do. A `Backend` is made anew for each test and has
///   Calendar& calendar();   in a zone that is always 5:30 h ahead of UTC
template <class Backend>
class CalendarContract : public ::testing::Test {
protected:
    Backend backend;
    Calendar& calendar = backend.calendar();

    static constexpr double midnight = 1'731'609'000; ///< 2024-11-15 0:00 there

    static Date date(double seconds) { return Date(Duration(seconds)); }

    void expectDay(double asked, double start, double until) {
        const Calendar::Day day = calendar.day(date(asked));
        EXPECT_EQ(day.start, date(start)) << asked;
        EXPECT_EQ(day.until, date(until)) << asked;
    }
    void expectTime(double asked, int hour, int minute) {
        const Calendar::TimeOfDay time = calendar.timeOfDay(date(asked));
        EXPECT_EQ(time.hour, hour) << asked;
        EXPECT_EQ(time.minute, minute) << asked;
    }
};

TYPED_TEST_SUITE_P(CalendarContract);

TYPED_TEST_P(CalendarContract, TellsTheLocalTime) {
    this->expectTime(this->midnight - 0.25, 23, 59);
    this->expectTime(this->midnight, 0, 0);
    this->expectTime(this->midnight + 59.75, 0, 0);
    this->expectTime(this->midnight + 60, 0, 1);
    this->expectTime(-1, 5, 29);
}

TYPED_TEST_P(CalendarContract, ADayIsFromMidnightToMidnight) {
    this->expectDay(this->midnight - 0.25, this->midnight - 86400, this->midnight);
    this->expectDay(this->midnight, this->midnight, this->midnight + 86400);
    this->expectDay(this->midnight + 43200.5, this->midnight, this->midnight + 86400);
    this->expectDay(-1, -19800, 66600);
}

TYPED_TEST_P(CalendarContract, DaysKeepTheTimeOfDayAndItsFraction) {
    EXPECT_EQ(this->calendar.addingDays(this->date(this->midnight + 0.25), 1), this->date(this->midnight + 86400.25));
    EXPECT_EQ(this->calendar.addingDays(this->date(this->midnight + 0.25), -6),
              this->date(this->midnight - 6 * 86400 + 0.25));
    EXPECT_EQ(this->calendar.addingDays(this->date(this->midnight + 0.25), 0), this->date(this->midnight + 0.25));
}

TYPED_TEST_P(CalendarContract, WhatIsNoLocalTimeStandsForItsOwnDay) {
    for (const double beyond : {1e16, -1e16, 1e300, -1e300, std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity()}) {
        this->expectTime(beyond, 0, 0);
        this->expectDay(beyond, beyond, beyond);
        EXPECT_FALSE(this->calendar.addingDays(this->date(beyond), 1)) << beyond;
        EXPECT_FALSE(this->calendar.addingDays(this->date(beyond), 0)) << beyond;
    }
    this->expectTime(std::nan(""), 0, 0);
    const Calendar::Day day = this->calendar.day(this->date(std::nan("")));
    EXPECT_TRUE(std::isnan(day.start.time_since_epoch().count()));
    EXPECT_TRUE(std::isnan(day.until.time_since_epoch().count()));
    EXPECT_FALSE(this->calendar.addingDays(this->date(std::nan("")), 1));
}

TYPED_TEST_P(CalendarContract, ThereIsNoDateBeyondAllLocalTimes) {
    for (const std::int64_t days : {std::int64_t{200'000'000'000}, std::numeric_limits<std::int64_t>::max()}) {
        EXPECT_FALSE(this->calendar.addingDays(this->date(this->midnight), days)) << days;
        EXPECT_FALSE(this->calendar.addingDays(this->date(this->midnight), -days)) << days;
    }
    EXPECT_FALSE(this->calendar.addingDays(this->date(this->midnight), std::numeric_limits<std::int64_t>::min()));
}

TYPED_TEST_P(CalendarContract, FarButKnownTimesAreExact) {
    const double far = this->midnight + 100'000'000'000 * 86400.0;
    this->expectTime(far + 60, 0, 1);
    this->expectDay(far + 1, far, far + 86400);
    EXPECT_EQ(this->calendar.addingDays(this->date(far), -100'000'000'000), this->date(this->midnight));
}

REGISTER_TYPED_TEST_SUITE_P(CalendarContract, TellsTheLocalTime, ADayIsFromMidnightToMidnight,
                            DaysKeepTheTimeOfDayAndItsFraction, WhatIsNoLocalTimeStandsForItsOwnDay,
                            ThereIsNoDateBeyondAllLocalTimes, FarButKnownTimesAreExact);
