// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/PowerReading.h"

#include "platform/linux/power/AdapterWatts.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace {

using Status = BatteryPack::Status;
using Unit = BatteryPack::Unit;
using Packs = std::vector<BatteryPack>;

bool anyIs(const Packs& packs, Status status) {
    return std::any_of(packs.begin(), packs.end(), [=](const auto& pack) { return pack.status == status; });
}

/// Sums `amount` over the packs; empty as soon as one pack has none.
template <class Function>
std::optional<double> sum(const Packs& packs, Function amount) {
    double total = 0;
    for (const BatteryPack& pack : packs) {
        const std::optional<double> one = amount(pack);
        if (!one)
            return std::nullopt;
        total += *one;
    }
    return packs.empty() ? std::nullopt : std::optional(total);
}

bool shareUnit(const Packs& packs) {
    return std::all_of(packs.begin(), packs.end(), [&](const auto& pack) { return pack.unit == packs.front().unit; });
}

bool isOnExternalPower(const std::vector<PowerSupply>& supplies, const Packs& packs) {
    if (packs.empty() || std::any_of(supplies.begin(), supplies.end(), [](const auto& s) { return s.isOnline(); }))
        return true;
    // QUIRK: some adapters stay at "offline" and some chargers show up nowhere; a battery that is charging or held
    // proves that there is one. But a pack that is held at its limit keeps that status when it is unplugged, and a
    // rate with a minus sign tells that it drains.
    const bool discharging = anyIs(packs, Status::discharging) ||
                             std::any_of(packs.begin(), packs.end(), [](const auto& p) { return p.reportsOutflow(); });
    if (!discharging &&
        (anyIs(packs, Status::charging) || anyIs(packs, Status::notCharging) || anyIs(packs, Status::full)))
        return true;
    const bool hasSupplies =
        std::any_of(supplies.begin(), supplies.end(), [](const auto& s) { return s.isExternalSupply(); });
    if (discharging || hasSupplies)
        return false;
    // All packs say "Unknown", and there is no adapter to ask: a running machine must draw its power from somewhere. It
    // draws more than the 1 mA that some firmware reports for none.
    // A missing rate counts as none: older kernels also say "Unknown" for a pack that is held.
    return std::all_of(packs.begin(), packs.end(), [](const auto& pack) {
        return std::abs(pack.power.value_or(0)) < 100 && std::abs(pack.current.value_or(0)) < 10;
    });
}

/// Skips packs that are electrically dead while another one works; counting them would halve the percentage.
Packs countedPacks(Packs packs) {
    if (std::any_of(packs.begin(), packs.end(), [](const auto& pack) { return !pack.isDead; }))
        std::erase_if(packs, [](const auto& pack) { return pack.isDead; });
    if (!packs.empty() && !shareUnit(packs)) {
        for (BatteryPack& pack : packs)
            pack = pack.inEnergy();
    }
    return packs;
}

std::pair<double, double> charge(const Packs& packs) {
    const auto now = sum(packs, [](const auto& pack) { return pack.now; });
    const auto full = sum(packs, [](const auto& pack) { return pack.full; });
    if (packs.size() > 1 && now && full && shareUnit(packs))
        return {*now, *full};
    // One pack, or packs that cannot be weighed against each other.
    const auto percent = sum(packs, [](const auto& pack) { return std::optional(pack.percent); });
    return {percent.value_or(0) / static_cast<double>(std::max<std::size_t>(packs.size(), 1)), 100};
}

bool chargesNow(const BatteryPack& pack) {
    return pack.status == Status::charging && !pack.reportsOutflow();
}

std::vector<PackLimit> limitsOf(const Packs& packs) {
    std::vector<PackLimit> limits;
    for (const BatteryPack& pack : packs) {
        const auto design = pack.design ? Value(std::round(*pack.design)).integer() : std::nullopt;
        if (!pack.isDead)
            limits.push_back({.device = pack.device,
                              .model = pack.name,
                              .design = design > 0 ? design : std::nullopt,
                              .percent = std::llround(pack.percent),
                              .isCharging = chargesNow(pack),
                              .tellsLimit = pack.tellsLimit,
                              .limit = pack.limit});
    }
    return limits;
}

bool packIsCharged(const BatteryPack& pack) {
    // 95 as shown, that is, rounded: firmware that holds a full pack lets it drift down to there.
    return pack.status == Status::full || (!pack.isActive() && std::round(pack.percent) >= 95);
}

/// The amount still to be stored until the pack stops charging.
double remaining(const BatteryPack& pack) {
    if (!pack.now || !pack.full || pack.status == Status::full)
        return 0;
    const double target = *pack.full * static_cast<double>(pack.limit.value_or(100)) / 100;
    // A pack that charges well past its threshold ignores it.
    const bool pastTarget = chargesNow(pack) && *pack.now > target + 0.02 * *pack.full;
    return std::max(0.0, (pastTarget ? *pack.full : target) - *pack.now);
}

/// The voltage to show, mV: that of the pack with the most power.
std::optional<double> shownVoltage(const Packs& packs, bool onExternalPower) {
    std::optional<double> voltage;
    double most = -1;
    for (const BatteryPack& pack : packs) {
        const double power = std::abs(pack.signedPower(onExternalPower).value_or(0));
        if (pack.voltage && power > most) {
            most = power;
            voltage = pack.voltage;
        }
    }
    return voltage;
}

/// A pack at rest need not report a rate of 0.
std::optional<double> orAtRest(const BatteryPack& pack, std::optional<double> rate) {
    return rate || pack.isActive() ? rate : 0.0;
}

std::optional<double> totalPower(const Packs& packs, bool onExternalPower) {
    return sum(packs, [=](const auto& pack) { return orAtRest(pack, pack.signedPower(onExternalPower)); });
}

std::optional<double> totalCurrent(const Packs& packs, bool onExternalPower) {
    return sum(packs, [=](const auto& pack) { return orAtRest(pack, pack.signedCurrent(onExternalPower)); });
}

std::optional<double> amperage(const Packs& packs, bool onExternalPower) {
    if (packs.size() == 1)
        return packs.front().signedCurrent(onExternalPower);
    const bool noneReports =
        std::none_of(packs.begin(), packs.end(), [](const auto& pack) { return pack.power || pack.current; });
    if (noneReports)
        return std::nullopt;
    const auto power = totalPower(packs, onExternalPower);
    const auto voltage = shownVoltage(packs, onExternalPower);
    if (power && (voltage || *power == 0))
        return *power == 0 ? 0 : *power / *voltage * 1000;
    return totalCurrent(packs, onExternalPower);
}

/// Leaves the key out if the number does not fit into an integer, as a product of hostile values may not.
void put(Dictionary& dictionary, std::string key, std::optional<double> number) {
    if (const auto whole = number ? Value(std::round(*number)).integer() : std::nullopt)
        dictionary.insert_or_assign(std::move(key), *whole);
}

} // namespace

PowerReading PowerReading::of(const std::vector<PowerSupply>& supplies) {
    PowerReading reading;
    Packs packs;
    for (const PowerSupply& supply : supplies) {
        if (!supply.isSystemBattery())
            continue;
        if (auto pack = BatteryPack::read(supply))
            packs.push_back(std::move(*pack));
    }
    reading.packLimits = limitsOf(packs);
    reading.packs = countedPacks(std::move(packs));
    reading.adapterWatts = ::adapterWatts(supplies);
    reading.onExternalPower = isOnExternalPower(supplies, reading.packs);
    if (reading.packs.empty())
        return reading;

    std::tie(reading.currentCapacity, reading.maxCapacity) = charge(reading.packs);
    reading.isCharging = std::any_of(reading.packs.begin(), reading.packs.end(), chargesNow);
    reading.isCharged =
        reading.onExternalPower && std::all_of(reading.packs.begin(), reading.packs.end(), packIsCharged);
    return reading;
}

bool PowerReading::failsAfter(const PowerReading& before, const std::vector<PowerSupply>& supplies) const {
    const auto has = [](const Packs& list, const std::string& device) {
        return std::any_of(list.begin(), list.end(), [&](const auto& pack) { return pack.device == device; });
    };
    // QUIRK: while firmware is busy, after sleep for instance, it may say that there is no battery at all, and the ACPI
    // driver removes the device until the battery is back. If one of several packs disappears, it has been taken out.
    if (packs.empty() && !before.packs.empty())
        return true;
    return std::any_of(supplies.begin(), supplies.end(), [&](const PowerSupply& supply) {
        const bool mayBeBattery = !supply.text("type") || supply.isSystemBattery();
        return mayBeBattery && has(before.packs, supply.name) && !has(packs, supply.name) && !BatteryPack::read(supply);
    });
}

TimeEstimate::Reading PowerReading::forTimeEstimate() const {
    TimeEstimate::Reading reading;
    reading.onExternalPower = onExternalPower;
    if (packs.empty())
        return reading;
    const bool energy = packs.front().unit == Unit::energy;
    for (const BatteryPack& pack : packs)
        reading.batteries += pack.device + (pack.unit == Unit::energy ? "/energy " : "/charge ");
    if (!shareUnit(packs))
        return reading;
    if (isCharging)
        reading.flow = TimeEstimate::Flow::charging;
    else if (!onExternalPower)
        reading.flow = TimeEstimate::Flow::discharging;
    reading.now = sum(packs, [](const auto& pack) { return pack.now; });
    reading.full = sum(packs, [](const auto& pack) { return pack.full; });
    for (const BatteryPack& pack : packs)
        reading.remaining += remaining(pack);
    reading.rate = energy ? totalPower(packs, onExternalPower) : totalCurrent(packs, onExternalPower);
    // Half a watt; where only charge is known, a hundredth of a full battery per hour comes close to that.
    reading.slowest = energy ? 500 : reading.full.value_or(0) / 100;
    return reading;
}

Dictionary PowerReading::description(const TimeEstimate::Minutes& minutes) const {
    Dictionary keys{
        {"Type", "InternalBattery"},
        {"Is Present", !packs.empty()},
        {"Power Source State", onExternalPower ? "AC Power" : "Battery Power"},
    };
    if (packs.empty())
        return keys;
    keys.insert({
        {"Current Capacity", currentCapacity},
        {"Max Capacity", maxCapacity},
        {"Is Charging", isCharging},
        {"Is Charged", isCharged},
        {"Name", packs.front().name},
        {"Time to Empty", minutes.toEmpty.value_or(-1)},
        {"Time to Full Charge", minutes.toFull.value_or(-1)},
    });
    return keys;
}

Dictionary PowerReading::registry() const {
    Dictionary keys;
    std::optional<double> temperature;
    std::optional<std::int64_t> cycles;
    for (const BatteryPack& pack : packs) {
        temperature = std::max(temperature, pack.temperature);
        cycles = std::max(cycles, pack.cycleCount);
    }
    if (cycles)
        keys.insert_or_assign("CycleCount", *cycles);
    const auto design = sum(packs, [](const auto& pack) { return pack.design; });
    const auto full = sum(packs, [](const auto& pack) { return pack.full; });
    if (design && full && shareUnit(packs)) {
        put(keys, "DesignCapacity", design);
        put(keys, "MaxCapacity", full);
    }
    put(keys, "Temperature", temperature);
    put(keys, "Voltage", shownVoltage(packs, onExternalPower));
    put(keys, "Amperage", amperage(packs, onExternalPower));
    if (adapterWatts)
        keys.insert_or_assign("AdapterDetails", Dictionary{{"Watts", *adapterWatts}});
    return keys;
}
