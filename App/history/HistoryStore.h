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

/// The charge of the last 30 days, in memory and in one file. No errors are reported: an unreadable file counts as an
/// empty history, and a file that cannot be written now is written on the next occasion.
class HistoryStore {
public:
    /// One local day of the history.
    struct DaySummary {
        Date day;                         ///< its start, which also identifies it
        std::int64_t avgPercent = 0;      ///< weighted by how long each level lasted
        std::int64_t minPercent = 0;      ///< never above 100
        std::int64_t maxPercent = 0;      ///< never below 0
        std::int64_t chargingMinutes = 0; ///< whole minutes
        bool operator==(const DaySummary&) const = default;
    };

    /// The path of the history file.
    static std::filesystem::path file(const Files& files);

    /// Loads the history from the file.
    HistoryStore(Files& files, const Clock& clock, const Calendar& calendar);
    HistoryStore(const HistoryStore&) = delete;
    HistoryStore& operator=(const HistoryStore&) = delete;

    /// Oldest first, as long as the clock does not go back.
    std::deque<Sample> samples;

    /// Records a reading; one that repeats the last only if `force` is set. A change of power source or charging is
    /// written to the file at once; the rest waits, to spare the disk.
    void record(const BatteryState& state, Date now, bool force);

    /// The instant since which the machine has been plugged in without a break; empty when the history cannot tell.
    std::optional<Date> pluggedSinceEstimate(Date now) const;

    /// The samples from the first one at or after `since`.
    std::vector<Sample> samplesSince(Date since) const;

    /// Summaries of those of the last `days` local days that have samples, newest first.
    std::vector<DaySummary> dailySummaries(std::int64_t days, Date now) const;

    /// The whole history as CSV with a header.
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
