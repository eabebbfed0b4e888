// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "battery/BatteryState.h"
#include "platform/PowerSources.h"

#include <functional>
#include <memory>
#include <vector>

class PowerSaving;

/// Turns the system's power-source descriptions into a `BatteryState`. No reading depends on an earlier one.
class BatteryReader {
public:
    BatteryReader(PowerSources& powerSources, const PowerSaving& powerSaving);
    BatteryReader(const BatteryReader&) = delete;
    BatteryReader& operator=(const BatteryReader&) = delete;

    /// Reads the battery now. Never fails: missing values keep their defaults.
    BatteryState read();

    /// What the packs' firmware said about charge limits at the latest reading, a pack each.
    const std::vector<PackLimit>& packLimits() const { return packLimits_; }

    /// Calls `callback` on the main thread at every change of the power sources. A second call does nothing; neither
    /// does the first if the system does not report changes.
    void startObserving(std::function<void()> callback);

private:
    PowerSources& powerSources_;
    const PowerSaving& powerSaving_;
    std::unique_ptr<PowerSources::Notification> source;
    std::vector<PackLimit> packLimits_;
};
