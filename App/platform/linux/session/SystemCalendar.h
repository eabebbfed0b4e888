// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Calendar.h"

/// Local time in the process's time zone, by the C library; follows changes of the system's time zone. Works up to 285
/// million years from 1970; each call costs a few microseconds.
class SystemCalendar final : public Calendar {
public:
    TimeOfDay timeOfDay(Date date) const override;
    Day day(Date date) const override;
    std::optional<Date> at(Date date, TimeOfDay time) const override;
    std::optional<Date> addingDays(Date date, std::int64_t days) const override;
};
