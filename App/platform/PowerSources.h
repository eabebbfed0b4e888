// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Value.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// What one scan of the machine's power supplies gave.
struct PowerSnapshot {
    /// The descriptions of the power sources, in order; the list, or one description, may be missing.
    /// Keys: "Type", "Is Present", "Current Capacity", "Max Capacity", "Is Charging", "Is Charged", "Power Source
    /// State", "Name", "Time to Full Charge", "Time to Empty" (minutes, -1 while unknown).
    std::optional<std::vector<std::optional<Value>>> sources;

    /// The battery registry's entry, from the same scan; empty when there is none. Asked for only where a battery is.
    /// Keys: "CycleCount", "DesignCapacity", "MaxCapacity", "Temperature" (1/100 degree Celsius), "Voltage" (mV),
    /// "Amperage" (mA, positive into the battery), "AdapterDetails" with "Watts".
    std::function<std::optional<Value>()> batteryProperties;
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

    /// Scans the devices now. Never fails: what cannot be read is missing.
    virtual PowerSnapshot snapshot() = 0;

    /// Calls `changed` on the main thread whenever the system reports a change of the power sources. Null when the
    /// system has no such reports.
    [[nodiscard]] virtual std::unique_ptr<Notification> notify(std::function<void()> changed) = 0;
};
