// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Value.h"
#include "platform/linux/power/BatteryPack.h"
#include "platform/linux/power/PowerSupply.h"
#include "platform/linux/power/TimeEstimate.h"

#include <cstdint>
#include <optional>
#include <vector>

/// What all power supplies of the machine say together, and its translation into the keys of `PowerSnapshot`.
struct PowerReading {
    std::vector<BatteryPack> packs; ///< those that count, by device name; empty without a battery
    bool onExternalPower = true;    ///< also without a battery, since the machine runs
    bool isCharging = false;        ///< any pack takes charge; false without a battery
    bool isCharged = false;         ///< all packs are full, or held at 95 % or more; false without a battery
    double currentCapacity = 0;     ///< together with `maxCapacity`: the charge
    double maxCapacity = 100;
    std::optional<std::int64_t> adapterWatts; ///< whole watts

    /// Makes sense of the supplies, which are in the order of their names.
    static PowerReading of(const std::vector<PowerSupply>& supplies);

    /// Whether no pack is left of those that counted `before`, or one of them is still there but tells nothing now, as
    /// firmware does for some seconds after sleep. A pack that was taken out beside others does not count as failing.
    bool failsAfter(const PowerReading& before, const std::vector<PowerSupply>& supplies) const;

    /// What the time estimate has to know; the instants are left to the caller.
    TimeEstimate::Reading forTimeEstimate() const;

    /// The description of the machine's battery, with "Is Present" false where there is none.
    Dictionary description(const TimeEstimate::Minutes& minutes) const;

    /// The entry of the battery registry.
    Dictionary registry() const;
};
