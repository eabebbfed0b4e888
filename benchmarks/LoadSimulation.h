// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/power/TimeEstimate.h"

#include <cstdint>
#include <string>
#include <vector>

/// What the program reads at one instant, and what nobody can know then: how long it really takes from here on.
struct SimulatedReading {
    TimeEstimate::Reading reading;
    double trueMinutes = 0; ///< until empty or full, as it turned out; sleep is not counted, for nobody looks at it
};

/// One battery that empties or fills once, read as the program reads it: each minute, and 0, 1, 2, 5 and 15 seconds
/// after an event (the plug, waking up, each whole percent). Amounts are in mWh, rates in mW.
struct SimulatedLoad {
    std::string name;
    std::vector<SimulatedReading> readings;
};

/// Each kind of load once; a different seed gives the same kinds with other accidents.
std::vector<SimulatedLoad> simulateLoads(std::uint64_t seed);
