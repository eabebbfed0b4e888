// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"
#include "support/FakeCalendar.h"
#include "support/RandomHistory.h"

#include <gtest/gtest.h>

namespace {

/// The parameter is the number of minutes by which local time is ahead of UTC.
class HistoryProperty : public testing::TestWithParam<int> {};

} // namespace

TEST_P(HistoryProperty, ThePlainRulesSayTheSame) {
    constexpr int histories = 400;
    const int minutes = GetParam();
    FakeCalendar calendar;
    calendar.minutesEastOfUtc = minutes;
    const PlainHistory::LocalClock localClock = [minutes](std::int64_t instant) { return instant + 60 * minutes; };
    for (std::uint64_t seed = 1; seed <= histories && !HasFailure(); ++seed)
        playRandomHistory(seed, calendar, localClock, {0, 1'709'164'800, 1'731'650'000});
}

INSTANTIATE_TEST_SUITE_P(MinutesEastOfUtc, HistoryProperty, testing::Values(0, 60, 345, 840, -210, -720));
