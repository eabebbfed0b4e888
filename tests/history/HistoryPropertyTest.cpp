// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"
#include "support/FakeCalendar.h"
#include "support/RandomHistory.h"

#include <gtest/gtest.h>

TEST(HistoryProperty, ThePlainRulesSayTheSameAtEveryDistanceFromUtc) {
    constexpr int histories = 400;
    for (const int minutes : {0, 60, 345, 840, -210, -720}) {
        SCOPED_TRACE("minutes east of UTC: " + std::to_string(minutes));
        FakeCalendar calendar;
        calendar.minutesEastOfUtc = minutes;
        const PlainHistory::LocalClock localClock = [minutes](std::int64_t instant) { return instant + 60 * minutes; };
        for (std::uint64_t seed = 1; seed <= histories; ++seed) {
            playRandomHistory(seed, calendar, localClock, {0, 1'709'164'800, 1'731'650'000});
            if (HasFailure())
                return;
        }
    }
}
