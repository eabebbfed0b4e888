// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <cstdint>
#include <optional>

/// The user's calendar: local time in the time zone of the process.
class Calendar {
public:
    virtual ~Calendar() = default;

    struct TimeOfDay {
        int hour = 0;   ///< 0..23
        int minute = 0; ///< 0..59
    };

    /// The local hour and minute of an instant; 0:00 when the instant cannot be converted to local time.
    virtual TimeOfDay timeOfDay(Date date) const = 0;

    /// A stretch of time in which every instant has the same local date.
    struct Day {
        Date start; ///< the first instant of that date: local midnight, or what comes instead where the clock skips it
        Date until; ///< every instant from the requested one to just before this one has the same date
    };

    /// The local day that contains the instant. When the instant cannot be converted to local time, `start` and `until`
    /// are both that instant.
    virtual Day day(Date date) const = 0;

    /// The instant at which the clock shows `time` on the local day that contains `date`: the first instant after the
    /// gap if the clock skips it, the first of the two if it comes twice. Empty when `date` cannot be converted to
    /// local time.
    virtual std::optional<Date> at(Date date, TimeOfDay time) const = 0;

    /// The instant `days` days later (earlier, when negative) at the same local time of day: the first instant after
    /// the gap if the clock skips that time, the first of the two if it comes twice. Empty when there is no such date.
    virtual std::optional<Date> addingDays(Date date, std::int64_t days) const = 0;
};
