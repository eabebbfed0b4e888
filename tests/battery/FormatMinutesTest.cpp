// SPDX-License-Identifier: GPL-3.0-or-later
#include "battery/FormatMinutes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

TEST(FormatMinutes, TellsWholeHoursAndMinutes) {
    struct Row {
        std::int64_t minutes;
        const char* text;
    };
    const Row rows[] = {
        {std::numeric_limits<std::int64_t>::min(), "1 min"},
        {-61, "1 min"},
        {-1, "1 min"},
        {0, "1 min"},
        {1, "1 min"},
        {2, "2 min"},
        {59, "59 min"},
        {60, "1 h"},
        {61, "1 h 1 min"},
        {119, "1 h 59 min"},
        {120, "2 h"},
        {125, "2 h 5 min"},
        {150, "2 h 30 min"},
        {600, "10 h"},
        {2880, "48 h"},
        {1'440'061, "24001 h 1 min"},
        {std::numeric_limits<std::int64_t>::max(), "153722867280912930 h 7 min"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(formatMinutes(row.minutes), row.text) << row.minutes;
}

TEST(FormatMinutes, NamesEachDurationFromOneMinuteOnDifferently) {
    std::string before = formatMinutes(0);
    EXPECT_EQ(before, formatMinutes(1));
    for (std::int64_t minutes = 2; minutes <= 3000; ++minutes) {
        const std::string text = formatMinutes(minutes);
        ASSERT_NE(text, before) << minutes;
        ASSERT_EQ(text.find(" 0 "), std::string::npos) << text;
        before = text;
    }
}

} // namespace
