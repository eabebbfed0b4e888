// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/power/PowerSupply.h"

#include <cstdint>
#include <optional>
#include <string>

/// The values of one battery pack, cleaned of firmware errors. Units are milli-units: mWh and mW, or mAh and mA.
struct BatteryPack {
    /// The kernel's status; `unknown` also when it is missing or not one of these.
    enum class Status { unknown, charging, discharging, notCharging, full };
    /// Energy in mWh, charge in mAh.
    enum class Unit { energy, charge };

    std::string name;   ///< the model's name, or the device's
    std::string device; ///< the device's name
    Status status = Status::unknown;
    double percent = 0;                     ///< 0..100, unrounded
    Unit unit = Unit::charge;               ///< of `now`, `full` and `design`
    std::optional<double> now;              ///< stored, mWh or mAh; only together with `full`
    std::optional<double> full;             ///< when full, above 0
    std::optional<double> design;           ///< when it was new, above 0
    std::optional<double> power;            ///< mW as reported, negative out of the pack; the sign may be missing
    std::optional<double> current;          ///< mA as reported, negative out of the pack; the sign may be missing
    std::optional<double> voltage;          ///< mV, at least 1000
    std::optional<double> nominalVoltage;   ///< mV, by design, at least 1000
    std::optional<double> temperature;      ///< hundredths of a degree Celsius
    std::optional<std::int64_t> cycleCount; ///< above 0
    bool tellsLimit = false;                ///< the firmware says something about where it stops charging
    std::optional<std::int64_t> limit;      ///< percent at which it stops charging, 1..100; 100 for no limit
    bool isDead = false;                    ///< in its bay, but electrically absent

    /// Reads a pack; empty when its charge cannot be determined.
    static std::optional<BatteryPack> read(const PowerSupply& supply);

    /// Whether it is charging or discharging.
    bool isActive() const { return status == Status::charging || status == Status::discharging; }

    /// Whether the rate itself says that charge flows out, whatever the status says.
    bool reportsOutflow() const { return power.value_or(0) < 0 || current.value_or(0) < 0; }

    /// +1 when charge flows into the pack, -1 when it flows out.
    int direction(bool onExternalPower) const;

    /// mW, signed by `direction`; empty when the firmware reports no rate.
    std::optional<double> signedPower(bool onExternalPower) const;

    /// mA, signed by `direction`; empty when the firmware reports no rate.
    std::optional<double> signedCurrent(bool onExternalPower) const;

    /// The same pack counted in energy; unchanged if the voltage for that is unknown.
    BatteryPack inEnergy() const;
};
