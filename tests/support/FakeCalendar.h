// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Calendar.h"

#include <cmath>

/// A calendar of a time zone with a fixed distance from UTC.
class FakeCalendar final : public Calendar {
public:
    int minutesEastOfUtc = 0;
    bool knowsNoTime = false; ///< every instant is beyond what can be told as a local time

    TimeOfDay timeOfDay(Date date) const override {
        if (knowsNoTime)
            return {};
        const double minutes = std::floor(date.time_since_epoch().count() / 60) + minutesEastOfUtc;
        const int ofDay = static_cast<int>(minutes - std::floor(minutes / 1440) * 1440);
        return {.hour = ofDay / 60, .minute = ofDay % 60};
    }
};
