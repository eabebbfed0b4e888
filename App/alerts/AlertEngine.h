// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/AlertKind.h"
#include "platform/Clock.h"

#include <cstdint>
#include <set>

/// The memory of the reminders: what was given in the episode that is going on. It lives as long as the program runs.
struct AlertEngine {
    std::set<AlertKind> suppressed; ///< silent until their condition has been false once
    std::int64_t chargeSent = 0;    ///< charge-limit reminders given in this episode
    Date chargeLast = Date::min();  ///< when the last of them was given; the distant past at first
    bool lowSent = false;           ///< the low-battery reminder was given in this episode
    bool longSent = false;          ///< the plugged-in-too-long reminder was given in this episode
    bool lowPowerSent = false;      ///< the Low Power Mode suggestion was given in this episode

    bool operator==(const AlertEngine&) const = default;
};
