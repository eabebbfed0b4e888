// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// One reading of the battery, with the texts derived from it alone. An empty optional means "unknown", never zero. A
/// default-constructed state is that of a machine without a battery.
struct BatteryState {
    bool hasBattery = false;                    ///< an internal battery was found and read
    std::int64_t percent = 0;                   ///< whole percent, 0..100
    bool isCharging = false;                    ///< charging now
    bool pluggedIn = false;                     ///< on external power
    bool isCharged = false;                     ///< the power source reports it as fully charged
    std::optional<std::int64_t> minutesToFull;  ///< minutes, at least 0; empty while still estimating
    std::optional<std::int64_t> minutesToEmpty; ///< minutes, at least 0; empty while still estimating
    std::optional<std::string> sourceName;      ///< the battery's own name
    std::optional<std::int64_t> cycleCount;     ///< charge cycles
    std::optional<std::int64_t> designCapacity; ///< at least 1, in the battery's own unit (mWh or mAh)
    std::optional<std::int64_t> fullCapacity;   ///< same unit; only present together with designCapacity
    std::optional<double> temperatureC;         ///< degrees Celsius
    std::optional<double> voltage;              ///< volts
    std::optional<double> amperage;             ///< amperes, positive into the battery
    std::optional<std::int64_t> adapterWatts;   ///< rated power of the connected adapter, at least 1
    bool lowPowerMode = false;                  ///< the system's low-power mode is on

    bool operator==(const BatteryState&) const = default;

    /// Names of glyphs that show this state, the most preferred first; never empty.
    std::vector<std::string> symbolNames() const;

    /// The remaining time as h:mm, "1:45"; empty when there is nothing to wait for or no estimate yet.
    std::optional<std::string> shortTime() const;

    /// One line that says what the battery is doing.
    std::string stateText() const;

    /// "Good", "Fair" or "Worn"; empty when the capacities are unknown.
    std::optional<std::string> healthLabel() const;

    /// Full charge as a percentage of the design capacity, unrounded; empty when either is unknown or the design
    /// capacity is not positive.
    std::optional<double> healthPercent() const;
};
