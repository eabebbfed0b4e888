// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ChargeTaper.h"

#include <algorithm>
#include <cmath>

double ChargeTaper::share(double missing) const {
    const double most = endRate + slope * std::max(0.0, missing);
    return most < plateau ? most / plateau : 1;
}

double ChargeTaper::effort(double missing) const {
    const double tapering = std::clamp((plateau - endRate) / slope, 0.0, std::max(0.0, missing));
    if (tapering == 0)
        return missing;
    return missing - tapering + plateau / slope * std::log(1 + slope * tapering / endRate);
}
