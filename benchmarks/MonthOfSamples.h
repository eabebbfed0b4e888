// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/SampleList.h"

#include <cmath>
#include <cstdint>

/// The end of the month.
inline Date monthEnd() {
    return Date(Duration(1'731'650'000));
}

/// The samples of 30 days with a reading in each of `intervals` intervals; one each minute makes 43,200. The battery
/// fills in two hours and empties in four; timers fire some milliseconds late.
inline SampleList monthOfSamples(int intervals = 43'200) {
    const double interval = 30.0 * 86'400 / intervals;
    SampleList samples;
    for (int i = 0; i < intervals; ++i) {
        const double t = (monthEnd() - Duration((intervals - i) * interval)).time_since_epoch().count();
        const double hour = std::fmod(t / 3600, 6);
        const bool fills = hour < 2;
        const double late = static_cast<double>(i * 7919 % 4096) / 1'000'000;
        samples.push_back({.t = t + late,
                           .p = static_cast<std::int64_t>(fills ? 20 + hour * 40 : 100 - (hour - 2) * 20),
                           .c = fills,
                           .a = fills});
    }
    return samples;
}
