// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "battery/BatteryState.h"
#include "platform/PowerSources.h"

#include <functional>
#include <memory>

class PowerSaving;

/// Turns what the system tells of its power sources into a `BatteryState`. Keeps nothing between two readings.
class BatteryReader {
public:
    BatteryReader(PowerSources& powerSources, const PowerSaving& powerSaving);
    BatteryReader(const BatteryReader&) = delete;
    BatteryReader& operator=(const BatteryReader&) = delete;

    /// Reads the battery now. Never fails: what is missing stays at its default.
    BatteryState read();

    /// Calls `callback` on the main thread at every change of the power sources. A second call does nothing; where the
    /// system has no change reports, so does the first.
    void startObserving(std::function<void()> callback);

private:
    PowerSources& powerSources_;
    const PowerSaving& powerSaving_;
    std::unique_ptr<PowerSources::Notification> source;
};
