// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <optional>

/// Whether the wall clock can be believed enough to delete something by it. Firmware that forgot the date, another
/// operating system or a paused virtual machine can set it wrong by weeks, for a minute or for a day.
class ClockTrust {
public:
    explicit ClockTrust(const Clock& clock);

    /// There is a reason to doubt the clock.
    void doubt();

    /// Whether, since the last doubt, the wall clock has run on evenly with the machine's own for 24 hours in which the
    /// machine was awake. A jump by more than a day is a reason for doubt.
    bool isGiven();

private:
    const Clock& clock_;
    Duration offset_; ///< of the wall clock to the time since the machine started, when they were last compared
    std::optional<Duration> doubtedAt_; ///< in seconds awake

    Duration offset() const { return clock_.now().time_since_epoch() - clock_.uptime(); }
    Duration awake() const { return clock_.uptime() - clock_.slept(); }
};
