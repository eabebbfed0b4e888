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

/// The texts and colours of the popover for a state, apart from where and how they are drawn. Times of day and dates,
/// whose format depends on the country, are not made here.

/// The colour of the ring's arc.
Tint ringTint(const BatteryState& state);

/// Describes the ring to screen readers: "80 %, charging".
std::string ringDescription(const BatteryState& state);

/// "Plugged in for 2 h 5 min"; empty when it is not plugged in.
std::optional<std::string> pluggedInText(std::optional<Date> pluggedSince, Date now);

/// The gauge of the charge cycles.
struct CycleGauge {
    std::string value;       ///< "312 of 1000"
    std::int64_t filled = 0; ///< of 1000; never below 0
    Tint tint = Tint::accent;
    bool operator==(const CycleGauge&) const = default;
};

/// The number of cycles that a battery is made for, which is the full scale of its gauge.
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

/// The known details, from top to bottom.
std::vector<DetailRow> detailRows(const BatteryState& state);

/// The cells of one day in the daily summary, except the day's name.
struct SummaryCells {
    std::string average;  ///< "81%"
    std::string range;    ///< "62–100%"
    std::string charging; ///< "1 h 5 min", and "–" for less than a minute
    bool operator==(const SummaryCells&) const = default;
};

/// The cells of this day.
SummaryCells summaryCells(const HistoryStore::DaySummary& summary);
