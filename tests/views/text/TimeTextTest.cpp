// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/TimeText.h"

#include "support/TimeZone.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <utility>

namespace {

struct TimeText : ::testing::Test {
    std::optional<TimeZone> zone{std::in_place, "UTC"};

    static std::string at(double seconds, const char* locale) {
        return shortTime(Date(Duration(seconds)), QLocale(QLatin1String(locale))).toStdString();
    }
};

constexpr double afternoon = 1763215500.9; // 2025-11-15 14:05:00 UTC

} // namespace

TEST_F(TimeText, IsWrittenAsPeopleOfTheLocaleWriteIt) {
    EXPECT_EQ(at(afternoon, "de_DE"), "14:05");
    // The locale data had a plain space there once, and later a narrow no-break space.
    EXPECT_THAT(at(afternoon, "en_US"), testing::AnyOf("2:05 PM", "2:05\u202fPM"));
    EXPECT_EQ(at(afternoon, "da_DK"), "14.05");
    EXPECT_EQ(at(afternoon, "C"), "14:05");
}

TEST_F(TimeText, IsLocal) {
    zone.emplace("Asia/Kathmandu");
    EXPECT_EQ(at(afternoon, "C"), "19:50");
}

TEST_F(TimeText, IsNothingForATimeThatNoClockShows) {
    EXPECT_EQ(at(1e300, "C"), "");
    EXPECT_EQ(at(std::numeric_limits<double>::quiet_NaN(), "C"), "");
}

TEST_F(TimeText, NamesTheDay) {
    const Date date{Duration(afternoon)};
    EXPECT_EQ(dayText(date, QLocale(QStringLiteral("en_US"))), QStringLiteral("Sat 15"));
    EXPECT_EQ(weekdayText(date, QLocale(QStringLiteral("fr_FR"))), QStringLiteral("sam."));
    zone.emplace("Pacific/Kiritimati");
    EXPECT_EQ(dayText(date, QLocale::c()), QStringLiteral("Sun 16"));
}
