// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/power/TimeEstimate.h"

#include <cstdint>
#include <string>
#include <vector>

/// A reading at one instant, with the time that is really left, which nobody can know at that instant.
struct SimulatedReading {
    TimeEstimate::Reading reading;
    /// Until empty or full, had the plug been left alone, without time asleep, when nobody looks at it.
    double trueMinutes = 0;
    bool counts = true; ///< false before a change that nobody can foresee
};

/// One battery that empties or fills, or is plugged and unplugged several times, read as the program reads it: every
/// minute, and 0, 1, 2, 5 and 15 seconds after an event (the plug, waking up, each whole percent). Amounts are in mWh,
/// rates in mW.
struct SimulatedLoad {
    std::string name;
    std::vector<SimulatedReading> readings;
};

/// Each kind of load once; another seed gives the same kinds with other random values.
std::vector<SimulatedLoad> simulateLoads(std::uint64_t seed);
