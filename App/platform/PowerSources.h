// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Value.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// One battery pack, as far as the charge limit that its firmware keeps to is concerned.
struct PackLimit {
    std::string device;                 ///< the system's name for its bay, for instance "BAT0"
    std::string model;                  ///< the pack's own name; the device's where it has none
    std::optional<std::int64_t> design; ///< its capacity when it was new, at least 1, in mWh or mAh
    std::int64_t percent = 0;           ///< its own charge, 0..100
    bool isCharging = false;            ///< this pack is charging
    bool tellsLimit = false;            ///< the firmware says something about a limit
    std::optional<std::int64_t> limit;  ///< what it says: percent, 1..100, 100 for no limit; empty for anything else
    bool operator==(const PackLimit&) const = default;
};

/// The result of one scan of the machine's power supplies.
struct PowerSnapshot {
    /// The descriptions of the power sources, in order; the list, or one description, may be missing.
    /// Keys: "Type", "Is Present", "Current Capacity", "Max Capacity", "Is Charging", "Is Charged", "Power Source
    /// State", "Name", "Time to Full Charge", "Time to Empty" (minutes, -1 while unknown).
    std::optional<std::vector<std::optional<Value>>> sources;

    /// The battery registry's entry, from the same scan; empty when there is none. Called only if there is a battery.
    /// Keys: "CycleCount", "DesignCapacity", "MaxCapacity", "Temperature" (1/100 degree Celsius), "Voltage" (mV),
    /// "Amperage" (mA, positive into the battery), "AdapterDetails" with "Watts".
    std::function<std::optional<Value>()> batteryProperties;

    /// Every battery pack that counts, by device name; from the same scan.
    std::vector<PackLimit> packLimits = {};
};

/// The operating system's view of batteries and adapters.
class PowerSources {
public:
    virtual ~PowerSources() = default;

    /// Keeps the change notification alive.
    class Notification {
    public:
        virtual ~Notification() = default;
    };

    /// Scans the devices now. Never fails: values that cannot be read are missing.
    virtual PowerSnapshot snapshot() = 0;

    /// Calls `changed` on the main thread whenever the system reports a change of the power sources; it must not end
    /// the notification. Null when the system does not report changes.
    [[nodiscard]] virtual std::unique_ptr<Notification> notify(std::function<void()> changed) = 0;
};
