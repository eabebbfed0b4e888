// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// One device of the kernel's power-supply class: its name and the content of its readable attribute files. Keys and
/// units are those of the kernel's power-supply ABI (Documentation/ABI/testing/sysfs-class-power).
struct PowerSupply {
    std::string name;
    std::map<std::string, std::string, std::less<>> attributes;

    /// The attribute without surrounding white space; empty when it is missing, blank or not UTF-8.
    std::optional<std::string> text(std::string_view attribute) const;

    /// The attribute as a decimal integer; empty when it is missing, not an integer, or beyond 64 bits.
    std::optional<std::int64_t> integer(std::string_view attribute) const;

    /// The first of the two attributes that is an integer, as a double; empty when neither is.
    std::optional<double> number(std::string_view attribute, std::string_view otherwise = {}) const;

    /// Whether this is a battery of a mouse, keyboard or other peripheral, which says nothing about the machine.
    bool isPeripheral() const;

    /// Whether this is a battery that the machine itself runs on, and it is in its bay.
    bool isSystemBattery() const;

    /// Whether this is a source of external power that reports whether it is connected.
    bool isExternalSupply() const;

    /// Whether an external supply is connected.
    bool isOnline() const;
};

/// The attributes to read: the common ones of every device and, depending on those, the ones of a battery or of a
/// supply.
inline constexpr std::array<const char*, 3> commonAttributes{"type", "scope", "present"};
inline constexpr std::array<const char*, 20> batteryAttributes{
    "status",      "capacity",           "model_name",  "cycle_count",
    "voltage_now", "voltage_min_design", "energy_now",  "energy_avg",
    "energy_full", "energy_full_design", "power_now",   "power_avg",
    "charge_now",  "charge_avg",         "charge_full", "charge_full_design",
    "current_now", "current_avg",        "temp",        "charge_control_end_threshold"};
inline constexpr std::array<const char*, 7> supplyAttributes{
    "online", "voltage_now", "voltage_max", "voltage_max_design", "current_now", "current_max", "input_power_limit"};
