// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/PopoverText.h"

#include "battery/FormatMinutes.h"
#include "views/text/FixedDecimals.h"

#include <algorithm>
#include <cmath>

namespace {

Tint healthTint(double health) {
    if (health > 90)
        return Tint::green;
    return health >= 80 ? Tint::orange : Tint::red;
}

Tint cycleTint(std::int64_t count) {
    if (count <= 700)
        return Tint::accent;
    return count <= 900 ? Tint::orange : Tint::red;
}

} // namespace

Tint ringTint(const BatteryState& state) {
    if (!state.pluggedIn && state.percent < 21)
        return Tint::red;
    if (state.isCharging || state.isCharged || (state.pluggedIn && state.percent > 99))
        return Tint::green;
    return Tint::accent;
}

std::string ringDescription(const BatteryState& state) {
    const std::string percent = std::to_string(state.percent) + " %, ";
    // In the same order as `BatteryState::stateText`.
    if (state.isCharged || (state.pluggedIn && !state.isCharging && state.percent > 99))
        return percent + "fully charged";
    if (state.isCharging)
        return percent + "charging";
    return percent + (state.pluggedIn ? "plugged in, not charging" : "on battery");
}

std::optional<std::string> pluggedInText(std::optional<Date> pluggedSince, Date now) {
    if (!pluggedSince)
        return std::nullopt;
    constexpr double mostMinutes = 1e15; // more than any clock can be wrong by
    const double minutes = std::clamp((now - *pluggedSince).count() / 60, -mostMinutes, mostMinutes);
    return "Plugged in for " + formatMinutes(static_cast<std::int64_t>(minutes));
}

std::optional<CycleGauge> cycleGauge(const BatteryState& state) {
    if (!state.cycleCount)
        return std::nullopt;
    const std::int64_t count = *state.cycleCount;
    return CycleGauge{.value = std::to_string(count) + " of " + std::to_string(cyclesOfAGauge),
                      .filled = std::clamp(count, std::int64_t{0}, cyclesOfAGauge),
                      .tint = cycleTint(count)};
}

std::vector<DetailRow> detailRows(const BatteryState& state) {
    std::vector<DetailRow> rows;
    const std::optional<double> health = state.healthPercent();
    if (const std::optional<std::string> label = state.healthLabel(); health && label)
        rows.push_back({"Battery health", fixed(*health, 0) + "% · " + *label, healthTint(*health)});
    if (state.temperatureC)
        rows.push_back({"Temperature", fixed(*state.temperatureC, 1) + " °C"});
    if (state.voltage && state.amperage) {
        const double power = *state.voltage * *state.amperage;
        if (std::abs(power) >= 0.1)
            rows.push_back({power > 0 ? "Power in" : "Power out", fixed(std::abs(power), 1) + " W"});
    }
    if (state.pluggedIn && state.adapterWatts)
        rows.push_back({"Adapter", std::to_string(*state.adapterWatts) + " W"});
    return rows;
}

SummaryCells summaryCells(const HistoryStore::DaySummary& summary) {
    return {.average = std::to_string(summary.avgPercent) + "%",
            .range = std::to_string(summary.minPercent) + "–" + std::to_string(summary.maxPercent) + "%",
            .charging = summary.chargingMinutes < 1 ? "–" : formatMinutes(summary.chargingMinutes)};
}
