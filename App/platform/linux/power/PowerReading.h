// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PowerSources.h"
#include "platform/Value.h"
#include "platform/linux/power/BatteryPack.h"
#include "platform/linux/power/PowerSupply.h"
#include "platform/linux/power/TimeEstimate.h"

#include <cstdint>
#include <optional>
#include <vector>

/// The combined reading of all power supplies of the machine, and its translation into the keys of `PowerSnapshot`.
struct PowerReading {
    std::vector<BatteryPack> packs; ///< the packs that count, by device name; empty without a battery
    bool onExternalPower = true;    ///< true without a battery, since the machine runs
    bool isCharging = false;        ///< any pack is charging; false without a battery
    bool isCharged = false;         ///< all packs are full, or held at 95 % or more; false without a battery
    double currentCapacity = 0;     ///< the charge, relative to `maxCapacity`
    double maxCapacity = 100;
    std::optional<std::int64_t> adapterWatts; ///< whole watts
    std::vector<PackLimit> packLimits;        ///< of the packs that count, before any conversion of their units

    /// Interprets the supplies, which are sorted by name.
    static PowerReading of(const std::vector<PowerSupply>& supplies);

    /// Whether no pack is left of those that counted `before`, or one of them is still there but reports nothing now,
    /// as firmware does for some seconds after sleep. A pack that was taken out beside others does not count as
    /// failing.
    bool failsAfter(const PowerReading& before, const std::vector<PowerSupply>& supplies) const;

    /// The input of the time estimate; the instants are left to the caller.
    TimeEstimate::Reading forTimeEstimate() const;

    /// The description of the machine's battery, with "Is Present" false if there is none.
    Dictionary description(const TimeEstimate::Minutes& minutes) const;

    /// The entry of the battery registry.
    Dictionary registry() const;
};
