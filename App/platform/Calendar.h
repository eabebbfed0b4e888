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

    /// The local hour and minute of an instant; 0:00 when the instant cannot be told as a local time.
    virtual TimeOfDay timeOfDay(Date date) const = 0;

    /// A stretch of time in which every instant has the same local date.
    struct Day {
        Date start; ///< the first instant of that date: local midnight, or what comes instead where the clock skips it
        Date until; ///< all instants from the asked one to just before this are of the same date
    };

    /// The local day that contains the instant. When it cannot be told as a local time, the instant itself stands for
    /// its day: `start` and `until` are both that instant.
    virtual Day day(Date date) const = 0;

    /// When the clock shows that time on the local day that contains the instant; where the clock skips it, the first
    /// instant after the gap; where it comes twice, the first. Empty when the instant cannot be told as a local time.
    virtual std::optional<Date> at(Date date, TimeOfDay time) const = 0;

    /// The instant `days` days later (earlier, when negative) at the same local time of day; where the clock skips that
    /// time, the first instant after the gap; where it comes twice, the first. Empty when there is no such date.
    virtual std::optional<Date> addingDays(Date date, std::int64_t days) const = 0;
};
