// SPDX-License-Identifier: GPL-3.0-or-later
#include "battery/FormatMinutes.h"

#include <algorithm>

std::string formatMinutes(std::int64_t minutes) {
    if (minutes <= 59)
        return std::to_string(std::max<std::int64_t>(minutes, 1)) + " min";
    const std::string hours = std::to_string(minutes / 60) + " h";
    const std::int64_t rest = minutes % 60;
    return rest == 0 ? hours : hours + " " + std::to_string(rest) + " min";
}
