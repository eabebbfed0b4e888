// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Calendar.h"

#include <cmath>

/// A calendar in a time zone with a fixed offset from UTC.
class FakeCalendar final : public Calendar {
public:
    int minutesEastOfUtc = 0;
    bool knowsNoTime = false; ///< every instant is outside the range of local times

    TimeOfDay timeOfDay(Date date) const override {
        if (!knows(date))
            return {};
        const double minutes = std::floor(date.time_since_epoch().count() / 60) + minutesEastOfUtc;
        const int ofDay = static_cast<int>(minutes - std::floor(minutes / 1440) * 1440);
        return {.hour = ofDay / 60, .minute = ofDay % 60};
    }

    Day day(Date date) const override {
        if (!knows(date))
            return {.start = date, .until = date};
        const Duration east(minutesEastOfUtc * 60.0);
        const Duration local = date.time_since_epoch() + east;
        const Date start(Duration(std::floor(local.count() / secondsOfDay) * secondsOfDay) - east);
        return {.start = start, .until = start + Duration(secondsOfDay)};
    }

    std::optional<Date> at(Date date, TimeOfDay time) const override {
        if (knowsNoTime)
            return std::nullopt;
        return day(date).start + Duration(time.hour * 3600.0 + time.minute * 60.0);
    }

    std::optional<Date> addingDays(Date date, std::int64_t days) const override {
        const Date later = date + Duration(static_cast<double>(days) * secondsOfDay);
        return knows(date) && knows(later) ? std::optional(later) : std::nullopt;
    }

private:
    static constexpr double secondsOfDay = 86400;

    bool knows(Date date) const {
        constexpr double limit = 9e15; // as in the system's calendar
        return !knowsNoTime && std::abs(date.time_since_epoch().count()) <= limit;
    }
};
