// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/SystemCalendar.h"

#include <cmath>
#include <ctime>

Calendar::TimeOfDay SystemCalendar::timeOfDay(Date date) const {
    const double seconds = std::floor(date.time_since_epoch().count());
    // What a 32-bit year can hold is far inside what a double holds exactly.
    if (!(std::abs(seconds) < 6e16))
        return {};
    const auto time = static_cast<std::time_t>(seconds);
    tzset(); // localtime_r alone need not notice that the user has travelled
    std::tm local{};
    if (localtime_r(&time, &local) == nullptr)
        return {};
    return {.hour = local.tm_hour, .minute = local.tm_min};
}
