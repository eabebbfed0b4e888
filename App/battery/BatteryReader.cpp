// SPDX-License-Identifier: GPL-3.0-or-later
#include "battery/BatteryReader.h"

#include "platform/PowerSaving.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

std::optional<std::int64_t> integerAt(const Dictionary& dictionary, std::string_view key) {
    const Value* value = find(dictionary, key);
    return value ? value->integer() : std::nullopt;
}

std::optional<double> numberAt(const Dictionary& dictionary, std::string_view key) {
    const Value* value = find(dictionary, key);
    return value ? value->number() : std::nullopt;
}

std::optional<bool> booleanAt(const Dictionary& dictionary, std::string_view key) {
    const Value* value = find(dictionary, key);
    return value ? value->boolean() : std::nullopt;
}

const std::string* textAt(const Dictionary& dictionary, std::string_view key) {
    const Value* value = find(dictionary, key);
    return value ? value->text() : nullptr;
}

template <class Number>
std::optional<Number> accepted(std::optional<Number> number, bool (*test)(Number)) {
    return number && test(*number) ? number : std::nullopt;
}

/// The description if it is that of an internal battery and readable, else null.
const Dictionary* usableBattery(const std::optional<Value>& description) {
    const Dictionary* source = description ? description->dictionary() : nullptr;
    if (!source)
        return nullptr;
    const std::string* type = textAt(*source, "Type");
    if (!type || *type != "InternalBattery" || booleanAt(*source, "Is Present") == false)
        return nullptr;
    const auto max = numberAt(*source, "Max Capacity");
    return numberAt(*source, "Current Capacity") && max && *max > 0 ? source : nullptr;
}

std::int64_t wholePercent(double current, double max) {
    return static_cast<std::int64_t>(std::clamp(std::round(current / max * 100), 0.0, 100.0));
}

void readLive(const PowerSnapshot& snapshot, BatteryState& state) {
    if (!snapshot.sources)
        return;
    for (const auto& description : *snapshot.sources) {
        const Dictionary* source = usableBattery(description);
        if (!source)
            continue;
        const auto notNegative = [](std::int64_t minutes) { return minutes >= 0; };
        const std::string* power = textAt(*source, "Power Source State");
        const std::string* name = textAt(*source, "Name");
        state.hasBattery = true;
        state.percent = wholePercent(*numberAt(*source, "Current Capacity"), *numberAt(*source, "Max Capacity"));
        state.isCharging = booleanAt(*source, "Is Charging").value_or(false);
        state.isCharged = booleanAt(*source, "Is Charged").value_or(false);
        state.pluggedIn = power && *power == "AC Power";
        state.sourceName = name ? std::optional(*name) : std::nullopt;
        state.minutesToFull = accepted<std::int64_t>(integerAt(*source, "Time to Full Charge"), notNegative);
        state.minutesToEmpty = accepted<std::int64_t>(integerAt(*source, "Time to Empty"), notNegative);
        return;
    }
}

/// The value of the first known key that is plausible as the full charge of a battery of this design. The raw value
/// comes first: the others may be rounded, or a percentage.
std::optional<std::int64_t> fullCapacity(const Dictionary& registry, std::int64_t design) {
    for (const std::string_view key : {"AppleRawMaxCapacity", "NominalChargeCapacity", "MaxCapacity"}) {
        const auto full = integerAt(registry, key);
        if (!full)
            continue;
        const auto value = static_cast<double>(*full);
        const auto reference = static_cast<double>(design);
        if (value >= 0.3 * reference && value <= 1.3 * reference)
            return full;
    }
    return std::nullopt;
}

void readRegistry(const PowerSnapshot& snapshot, BatteryState& state) {
    const auto entry = snapshot.batteryProperties ? snapshot.batteryProperties() : std::nullopt;
    const Dictionary* registry = entry ? entry->dictionary() : nullptr;
    if (!registry)
        return;
    const auto positive = [](std::int64_t number) { return number > 0; };
    state.cycleCount =
        accepted<std::int64_t>(integerAt(*registry, "CycleCount"), [](std::int64_t count) { return count >= 0; });
    state.designCapacity = accepted<std::int64_t>(integerAt(*registry, "DesignCapacity"), positive);
    if (state.designCapacity)
        state.fullCapacity = fullCapacity(*registry, *state.designCapacity);
    if (const auto hundredths = integerAt(*registry, "Temperature")) {
        const double celsius = static_cast<double>(*hundredths) / 100.0;
        if (celsius > -20.0 && celsius < 100.0)
            state.temperatureC = celsius;
    }
    if (const auto millivolts = accepted<std::int64_t>(integerAt(*registry, "Voltage"), positive))
        state.voltage = static_cast<double>(*millivolts) / 1000.0;
    auto milliamperes = integerAt(*registry, "Amperage");
    if (!milliamperes)
        milliamperes = integerAt(*registry, "InstantAmperage");
    if (milliamperes)
        state.amperage = static_cast<double>(*milliamperes) / 1000.0;
    const Value* adapter = find(*registry, "AdapterDetails");
    if (const Dictionary* details = adapter ? adapter->dictionary() : nullptr)
        state.adapterWatts = accepted<std::int64_t>(integerAt(*details, "Watts"), positive);
}

} // namespace

BatteryReader::BatteryReader(PowerSources& powerSources, const PowerSaving& powerSaving)
    : powerSources_(powerSources)
    , powerSaving_(powerSaving) {}

BatteryState BatteryReader::read() {
    BatteryState state;
    PowerSnapshot snapshot = powerSources_.snapshot();
    readLive(snapshot, state);
    state.lowPowerMode = powerSaving_.isLowPowerModeEnabled();
    if (state.hasBattery)
        readRegistry(snapshot, state);
    packLimits_ = std::move(snapshot.packLimits);
    return state;
}

void BatteryReader::startObserving(std::function<void()> callback) {
    if (!source)
        source = powerSources_.notify(std::move(callback));
}
