// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/ClockTrust.h"

#include <chrono>

using namespace std::chrono_literals;

ClockTrust::ClockTrust(const Clock& clock) : clock_(clock), offset_(offset()) {}

void ClockTrust::doubt() {
    offset_ = offset();
    doubtedAt_ = awake();
}

bool ClockTrust::isGiven() {
    if (const Duration jump = offset() - offset_; jump > 24h || jump < -24h)
        doubt();
    if (doubtedAt_ && awake() - *doubtedAt_ >= 24h)
        doubtedAt_.reset();
    return !doubtedAt_;
}
