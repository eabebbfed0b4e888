// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "battery/BatteryState.h"
#include "history/HistoryStore.h"
#include "platform/Clock.h"
#include "views/text/Tint.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the popover says of a state, apart from where and how it is drawn. Times of day and dates, which people of each
/// country write differently, are not made here.

/// The colour of the ring's arc.
Tint ringTint(const BatteryState& state);

/// What the ring is for those who cannot see it: "80 %, charging".
std::string ringDescription(const BatteryState& state);

/// "Plugged in for 2 h 5 min"; empty when it is not plugged in.
std::optional<std::string> pluggedInText(std::optional<Date> pluggedSince, Date now);

/// The gauge of the charge cycles.
struct CycleGauge {
    std::string value;       ///< "312 of 1000"
    std::int64_t filled = 0; ///< of 1000; less than 0 never
    Tint tint = Tint::accent;
    bool operator==(const CycleGauge&) const = default;
};

/// How many cycles a battery is made for, as its gauge is divided.
inline constexpr std::int64_t cyclesOfAGauge = 1000;

/// Empty when the battery does not count its cycles.
std::optional<CycleGauge> cycleGauge(const BatteryState& state);

/// A label with its value.
struct DetailRow {
    std::string label;
    std::string value;
    Tint tint = Tint::secondary; ///< of the value
    bool operator==(const DetailRow&) const = default;
};

/// The details that are known, from the top.
std::vector<DetailRow> detailRows(const BatteryState& state);

/// The cells of one day of the daily summary, but for the day's name.
struct SummaryCells {
    std::string average;  ///< "81%"
    std::string range;    ///< "62–100%"
    std::string charging; ///< "1 h 5 min", and "–" for less than a minute
    bool operator==(const SummaryCells&) const = default;
};

/// The cells of this day.
SummaryCells summaryCells(const HistoryStore::DaySummary& summary);
