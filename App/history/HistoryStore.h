// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "battery/BatteryState.h"
#include "history/ClockTrust.h"
#include "history/SampleList.h"
#include "platform/Calendar.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Lifetime.h"
#include "platform/Subscription.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// The charge of the last 30 days, in memory and in one file. No errors are reported: an unreadable file counts as an
/// empty history, and a file that cannot be written now is written on the next occasion. Of several programs with the
/// same file, as in two sessions of one user, the first writes, and the others show what it has written.
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

    /// Starts to load the history from the file. Until that is done, nothing is written.
    HistoryStore(Files& files, const Clock& clock, const Calendar& calendar);
    HistoryStore(const HistoryStore&) = delete;
    HistoryStore& operator=(const HistoryStore&) = delete;

    /// Oldest first, as long as the clock does not go back.
    SampleList samples;

    /// Whether the file has been loaded.
    bool isLoaded() const { return isLoaded_; }

    /// Whether the file is being loaded, at the start or to take over from another program: nothing is saved until
    /// then.
    bool awaitsFile() const { return !isLoaded_ || hasClaim_ != mayWrite_; }

    /// Called when samples have come from the file, after loading it or because another program has changed it.
    std::function<void()> onReload;

    /// Records a reading; one that repeats the last only if `force` is set. A change of power source or charging is
    /// written to the file at once; the rest waits, to spare the disk.
    void record(const BatteryState& state, Date now, bool force);

    /// The instant since which the machine has been plugged in without a break; empty when the history cannot tell.
    std::optional<Date> pluggedSinceEstimate(Date now) const;

    /// A view of the samples from the first one at or after `since`; valid until the history changes.
    SampleList::Tail samplesSince(Date since) const { return {samples, samples.firstNotBefore(since)}; }

    /// Summaries of those of the last `days` local days that have samples, newest first.
    std::vector<DaySummary> dailySummaries(std::int64_t days, Date now) const;

    /// Whether `dailySummaries` has any, which takes much less time to tell.
    bool hasDailySummaries(std::int64_t days, Date now) const;

    /// The whole history as CSV with a header.
    std::string csv() const;

    /// Writes the history to its file now.
    void save(Date now);

    /// Empties the history and its file, for all programs that share it.
    void reset(Date now);

private:
    Files& files_;
    const Clock& clock_;
    const Calendar& calendar_;
    std::filesystem::path url;
    Date lastSave = Date::min();
    std::vector<Sample> unsaved_; ///< recorded here, and perhaps not in the file yet
    std::size_t dropped_ = 0;     ///< from the front of `unsaved_`, in all
    int saves_ = 0;               ///< begun so far
    int savesDone_ = 0;           ///< the number of the latest one that has been done or has failed
    bool isFileEmpty_ = true;     ///< as far as we know, the file holds no samples
    ClockTrust clockTrust_;
    bool isLoaded_ = false;
    bool hasClaim_;         ///< this program is the one that writes the file
    bool mayWrite_ = false; ///< and knows what is in it
    int loads_ = 0;         ///< begun so far
    Subscription fileChanges_;
    Lifetime lifetime_;

    void load();
    void claim();
    void empty();
    void take(std::optional<SampleList> loaded);
    void saveAtEnd();
    void dropUnsaved(std::size_t count);
    void prune(Date now);
};
