// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

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
};
