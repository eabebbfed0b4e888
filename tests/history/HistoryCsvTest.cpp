// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryCsv.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

const std::string header = "timestamp,percent,charging,plugged_in\n";

/// The time as the CSV text has it.
std::string timestamp(double t) {
    const std::string text = historyCsv({{.t = t}}).substr(header.size());
    return text.substr(0, text.find(','));
}

TEST(HistoryCsv, IsItsHeaderAloneWithoutSamples) {
    EXPECT_EQ(historyCsv({}), header);
}

TEST(HistoryCsv, HasALineForEachSample) {
    EXPECT_EQ(historyCsv({{.t = 1794729600, .p = 80, .c = true, .a = true},
                          {.t = 1794729660, .p = 80, .c = false, .a = true},
                          {.t = 1794780224.999, .p = -1, .c = false, .a = false}}),
              header + "2026-11-15T08:00:00Z,80,true,true\n"
                       "2026-11-15T08:01:00Z,80,false,true\n"
                       "2026-11-15T22:03:44Z,-1,false,false\n");
}

// Expected: date --utc --date=@SECONDS +%FT%TZ
TEST(HistoryCsv, WritesTimesInUtcAndWholeSeconds) {
    EXPECT_EQ(timestamp(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(timestamp(-0.25), "1969-12-31T23:59:59Z");
    EXPECT_EQ(timestamp(951782399.9), "2000-02-28T23:59:59Z");
    EXPECT_EQ(timestamp(951782400), "2000-02-29T00:00:00Z");
    EXPECT_EQ(timestamp(4107542400), "2100-03-01T00:00:00Z");
    EXPECT_EQ(timestamp(1709251199), "2024-02-29T23:59:59Z");
    EXPECT_EQ(timestamp(253402300799), "9999-12-31T23:59:59Z");
    EXPECT_EQ(timestamp(-62135596800), "0001-01-01T00:00:00Z");
    EXPECT_EQ(timestamp(253402300800), "10000-01-01T00:00:00Z");
}

TEST(HistoryCsv, SurvivesTimesBeyondAllCalendars) {
    for (const double t : {1e300, -1e300, std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest(),
                           std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()})
        EXPECT_NE(timestamp(t).find('T'), std::string::npos) << t;
    EXPECT_EQ(historyCsv({{.t = 0, .p = std::numeric_limits<std::int64_t>::min()}}),
              header + "1970-01-01T00:00:00Z,-9223372036854775808,false,false\n");
}

} // namespace
