// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"
#include "platform/linux/session/SystemCalendar.h"
#include "support/RandomHistory.h"
#include "support/TimeZone.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

namespace {

/// Runs in the time zone that the parameter names.
class HistoryZones : public testing::TestWithParam<const char*> {
protected:
    TimeZone zone{GetParam()};

    static std::int64_t localTime(std::int64_t instant) {
        const std::time_t time = instant;
        std::tm fields{};
        localtime_r(&time, &fields);
        return instant + fields.tm_gmtoff;
    }

    /// The hours in which the clock is changed, from 2005 to 2024.
    static std::vector<std::int64_t> changes() {
        std::vector<std::int64_t> hours;
        for (std::int64_t hour = 1'104'537'600; hour < 1'735'689'600; hour += 3600) {
            if (localTime(hour + 3600) - localTime(hour) != 3600)
                hours.push_back(hour);
        }
        return hours;
    }
};

} // namespace

TEST_P(HistoryZones, ThePlainRulesSayTheSameWhereTheClockIsSet) {
    constexpr int histories = 60;
    const SystemCalendar calendar;
    std::vector<std::int64_t> places = changes();
    if (std::string(GetParam()) == "Asia/Kathmandu" || std::string(GetParam()) == "UTC")
        places = {1'709'164'800, 1'731'650'000};
    ASSERT_FALSE(places.empty()) << "the time zone database is missing";
    for (std::uint64_t seed = 1; seed <= histories && !HasFailure(); ++seed)
        playRandomHistory(seed, calendar, localTime, places);
}

// These zones skip or repeat midnight, an hour of the night or half of one, a minute after midnight, a whole day, or
// nothing.
INSTANTIATE_TEST_SUITE_P(Zones, HistoryZones,
                         testing::Values("Africa/Cairo", "America/Sao_Paulo", "America/St_Johns", "Asia/Kathmandu",
                                         "Australia/Lord_Howe", "Europe/Berlin", "Pacific/Apia", "UTC"),
                         [](const auto& zone) {
                             std::string name = zone.param;
                             std::erase(name, '/');
                             std::erase(name, '_');
                             return name;
                         });
