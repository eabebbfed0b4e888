// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/LimitAlert.h"
#include "alerts/LimitMemory.h"
#include "platform/Clock.h"
#include "platform/PowerSources.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// Watches the charge limit that firmware keeps to, and that the user has set elsewhere: whether batteries are charged
/// beyond it, and whether it is gone after a start or a sleep. It decides what to tell, and delivers nothing.
struct LimitWatch {
    /// What follows from a reading.
    struct Outcome {
        std::vector<LimitAlert> due;      ///< at most one of each kind; they count as given
        std::vector<LimitAlertKind> over; ///< given earlier, and not true any more
        bool operator==(const Outcome&) const = default;
    };

    LimitMemory memory; ///< to be kept across starts

    /// To be called with every reading. `uptime` grows also while the machine sleeps. Without `canDeliver` nothing is
    /// given, and what is due then is given later if it still holds. With `prime`, at the start and after a sleep,
    /// nothing is given either, and the limits are compared anew with those that were in force before.
    Outcome run(const std::vector<PackLimit>& packs, bool pluggedIn, Duration uptime, bool canDeliver, bool prime);

    /// Whether this machine has, or had, such a limit.
    bool concernsMachine() const { return tellsLimit_ || !memory.limits.empty() || !toldReset_.empty(); }

private:
    using Battery = LimitMemory::Battery;

    /// A battery in its bay, with a limit.
    struct Bay {
        Battery battery;
        std::int64_t limit = 0;
        bool wasWithin = false; ///< the limit held, and nothing was told since
        bool isTold = false;    ///< that it does not hold, and it still does not
        std::optional<Duration> beyondSince;
    };

    std::map<std::string, Bay> bays_; ///< by device
    std::set<Battery> compared_;      ///< since the start or the last sleep
    std::set<Battery> unlimited_;     ///< found without their limit in the reading before
    std::set<Battery> toldReset_;     ///< that their limit was reset, and it still is
    bool tellsLimit_ = false;

    void watchCharge(const std::vector<PackLimit>& packs, bool pluggedIn, Duration uptime, bool mayTell,
                     Outcome& outcome);
    void watchLimits(const std::vector<PackLimit>& packs, bool mayTell, Outcome& outcome);
};
