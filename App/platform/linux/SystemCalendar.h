// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Calendar.h"

/// The time zone of the process, as the C library knows it; follows changes of the system's time zone.
class SystemCalendar final : public Calendar {
public:
    TimeOfDay timeOfDay(Date date) const override;
};
