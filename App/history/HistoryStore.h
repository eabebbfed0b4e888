// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "battery/BatteryState.h"
#include "history/Sample.h"
#include "platform/Calendar.h"
#include "platform/Clock.h"
#include "platform/Files.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The charge of the last 30 days, in memory and in one file. Nothing here reports an error: a file that cannot be read
/// is an empty history, and one that cannot be written now is written at the next occasion.
class HistoryStore {
public:
    /// One local day of the history.
    struct DaySummary {
        Date day;                         ///< its start, and its identity
        std::int64_t avgPercent = 0;      ///< weighted with the time that each charge lasted
        std::int64_t minPercent = 0;      ///< never above 100
        std::int64_t maxPercent = 0;      ///< never below 0
        std::int64_t chargingMinutes = 0; ///< whole minutes
        bool operator==(const DaySummary&) const = default;
    };

    /// Where the history is kept.
    static std::filesystem::path file(const Files& files);

    /// Loads what the file holds.
    HistoryStore(Files& files, const Clock& clock, const Calendar& calendar);
    HistoryStore(const HistoryStore&) = delete;
    HistoryStore& operator=(const HistoryStore&) = delete;

    /// Oldest first, as long as the clock does not go back.
    std::deque<Sample> samples;

    /// Remembers a reading; one that says nothing new only when `force` is set. What changed matters at once and is
    /// written at once; the rest waits, so that the disk is left alone.
    void record(const BatteryState& state, Date now, bool force);

    /// Since when the machine has been plugged in without a break; empty when the history cannot say.
    std::optional<Date> pluggedSinceEstimate(Date now) const;

    /// The samples from the first one that is not before `since`.
    std::vector<Sample> samplesSince(Date since) const;

    /// The days of the last `days` local days that have samples, newest first.
    std::vector<DaySummary> dailySummaries(std::int64_t days, Date now) const;

    /// The whole history as comma-separated text with a header.
    std::string csv() const;

    /// Writes the history to its file now.
    void save(Date now);

private:
    Files& files_;
    const Calendar& calendar_;
    std::filesystem::path url;
    Date lastSave = Date::min();

    void prune(Date now);
};
