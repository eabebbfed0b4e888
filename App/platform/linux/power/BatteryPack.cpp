// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/BatteryPack.h"

#include <algorithm>
#include <cmath>

namespace {

BatteryPack::Status statusOf(const PowerSupply& supply) {
    const auto text = supply.text("status");
    if (text == "Charging")
        return BatteryPack::Status::charging;
    if (text == "Discharging")
        return BatteryPack::Status::discharging;
    if (text == "Not charging")
        return BatteryPack::Status::notCharging;
    if (text == "Full")
        return BatteryPack::Status::full;
    return BatteryPack::Status::unknown;
}

std::optional<double> positive(std::optional<double> number) {
    return number && *number > 0 ? number : std::nullopt;
}

std::optional<double> scaled(std::optional<double> number, double factor) {
    return number ? std::optional(*number * factor) : std::nullopt;
}

constexpr double leastVoltage = 1000; ///< mV; no pack has less

std::optional<double> millivolts(std::optional<double> microvolts) {
    return microvolts && *microvolts >= leastVoltage * 1000 ? std::optional(*microvolts / 1000) : std::nullopt;
}

/// QUIRK: a missing sensor reads as absolute zero or as the largest number; beside a real one it must not count.
std::optional<double> plausibleTemperature(std::optional<double> hundredths) {
    return hundredths && *hundredths > -2000 && *hundredths < 10000 ? hundredths : std::nullopt;
}

/// `now`, `full` and `design` as energy or as charge, in the kernel's micro-units.
struct Stored {
    std::optional<double> now;
    std::optional<double> full;
    std::optional<double> design;
};

Stored storedEnergy(const PowerSupply& supply) {
    return {supply.number("energy_now", "energy_avg"), positive(supply.number("energy_full")),
            positive(supply.number("energy_full_design"))};
}

Stored storedCharge(const PowerSupply& supply) {
    return {supply.number("charge_now", "charge_avg"), positive(supply.number("charge_full")),
            positive(supply.number("charge_full_design"))};
}

/// A pack counts in energy or in charge; if both are there, energy is used, which adds up across packs of different
/// voltages. One attribute alone does not decide: some firmware reports energy_now beside charge_full.
BatteryPack::Unit unitOf(const Stored& energy, const Stored& charge) {
    if (energy.now && energy.full)
        return BatteryPack::Unit::energy;
    if (charge.now && charge.full)
        return BatteryPack::Unit::charge;
    return energy.full ? BatteryPack::Unit::energy : BatteryPack::Unit::charge;
}

std::optional<double> percentOf(const PowerSupply& supply, const Stored& stored) {
    const auto capacity = supply.number("capacity");
    if (capacity && *capacity >= 0)
        return std::min(*capacity, 100.0);
    if (stored.now && stored.full)
        return std::clamp(*stored.now / *stored.full * 100, 0.0, 100.0);
    return std::nullopt;
}

/// Factor from the file's unit to milli-units.
double toMilli(BatteryPack::Unit unit, const Stored& stored) {
    // QUIRK: a few boards write milli-units where micro-units belong. No computer runs on a battery of less than 0.1 Ah
    // or 1 Wh, so a capacity below that gives them away.
    const double least = unit == BatteryPack::Unit::energy ? 1e6 : 1e5;
    const double largest = std::max(stored.full.value_or(0), stored.design.value_or(0));
    return largest > 0 && largest < least ? 1 : 1e-3;
}

/// Drops a rate that cannot be true: above 300 W the firmware means something else. If the voltage is unknown, it is at
/// least the 1 V that every pack has.
void dropImpossibleRate(BatteryPack& pack) {
    constexpr double most = 300e3;
    const bool tooMuchPower = pack.power && std::abs(*pack.power) > most;
    const bool tooMuchCurrent =
        pack.current && std::abs(*pack.current) * pack.voltage.value_or(leastVoltage) / 1000 > most;
    if (tooMuchPower)
        pack.power.reset();
    if (tooMuchCurrent)
        pack.current.reset();
}

} // namespace

std::optional<BatteryPack> BatteryPack::read(const PowerSupply& supply) {
    const Stored energy = storedEnergy(supply);
    const Stored charge = storedCharge(supply);
    BatteryPack pack;
    pack.unit = unitOf(energy, charge);
    const Stored& stored = pack.unit == Unit::energy ? energy : charge;
    const auto percent = percentOf(supply, stored);
    if (!percent)
        return std::nullopt;

    const double factor = toMilli(pack.unit, stored);
    pack.device = supply.name;
    pack.name = supply.text("model_name").value_or(supply.name);
    pack.status = statusOf(supply);
    pack.percent = *percent;
    pack.full = scaled(stored.full, factor);
    pack.design = scaled(stored.design, factor);
    if (pack.full) {
        // QUIRK: an Apple Silicon driver reports up to twelve times too much, with the right percentage beside it.
        const bool credible = stored.now && *stored.now >= 0 && *stored.now <= 1.2 * *stored.full;
        pack.now = credible ? *stored.now * factor : *pack.full * pack.percent / 100;
    }
    pack.power = scaled(supply.number("power_now", "power_avg"), factor);
    pack.current = scaled(supply.number("current_now", "current_avg"), factor);
    pack.voltage = millivolts(supply.number("voltage_now"));
    pack.nominalVoltage = millivolts(supply.number("voltage_min_design"));
    pack.temperature = plausibleTemperature(scaled(supply.number("temp"), 10));
    const auto cycles = supply.integer("cycle_count");
    if (cycles && *cycles > 0)
        pack.cycleCount = cycles;
    pack.tellsLimit = supply.attributes.contains("charge_control_end_threshold");
    const auto threshold = supply.integer("charge_control_end_threshold");
    if (threshold && *threshold >= 1 && *threshold <= 100)
        pack.limit = threshold;
    // Dead whatever percentage it claims.
    const auto holds = energy.now ? energy.now : charge.now;
    pack.isDead = supply.integer("voltage_now") == 0 && holds.value_or(pack.percent) <= 0;
    dropImpossibleRate(pack);
    // Only one of the two is real: some firmware has a file for the other that is always 0.
    if (pack.power == 0.0 && pack.current.value_or(0) != 0)
        pack.power.reset();
    if (pack.current == 0.0 && pack.power.value_or(0) != 0)
        pack.current.reset();
    return pack;
}

int BatteryPack::direction(bool onExternalPower) const {
    // QUIRK: ACPI batteries report the magnitude only; the status gives the direction. A minus sign can be trusted.
    if (reportsOutflow())
        return -1;
    if (status == Status::charging)
        return 1;
    if (status == Status::discharging)
        return -1;
    return onExternalPower ? 1 : -1;
}

std::optional<double> BatteryPack::signedPower(bool onExternalPower) const {
    auto magnitude = power;
    if (!magnitude && current && (voltage || *current == 0))
        magnitude = *current * voltage.value_or(0) / 1000;
    return magnitude ? std::optional(std::abs(*magnitude) * direction(onExternalPower)) : std::nullopt;
}

std::optional<double> BatteryPack::signedCurrent(bool onExternalPower) const {
    auto magnitude = current;
    if (!magnitude && power && (voltage || *power == 0))
        magnitude = *power == 0 ? 0 : *power / *voltage * 1000;
    return magnitude ? std::optional(std::abs(*magnitude) * direction(onExternalPower)) : std::nullopt;
}

BatteryPack BatteryPack::inEnergy() const {
    const auto volts = nominalVoltage ? nominalVoltage : voltage;
    if (unit == Unit::energy || !volts)
        return *this;
    BatteryPack pack = *this;
    pack.unit = Unit::energy;
    for (auto* amount : {&pack.now, &pack.full, &pack.design})
        *amount = scaled(*amount, *volts / 1000);
    return pack;
}
