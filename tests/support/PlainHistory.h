// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "battery/BatteryState.h"
#include "history/HistoryStore.h"
#include "history/Sample.h"
#include "platform/Clock.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// A second implementation of the history's rules, as plain as possible and however slow, to compare the store with. It
/// counts in whole eighths of a second, so that nothing is rounded; times that are passed in must be multiples of that.
/// The machine's own clock stands still, so that a doubt about the wall clock never ends.
class PlainHistory {
public:
    /// Returns local time for an instant, both in seconds from 1970-01-01 0:00, in UTC and on the local clock. They
    /// differ by whole minutes.
    using LocalClock = std::function<std::int64_t(std::int64_t)>;

    explicit PlainHistory(LocalClock localClock);

    std::vector<Sample> samples;
    std::string file;           ///< the file on the disk
    bool isDiskFull = false;    ///< nothing can be written
    std::size_t timesSaved = 0; ///< including failed attempts

    void load(const std::vector<Sample>& list, Date now);
    void record(const BatteryState& state, Date now, bool force);
    void save(Date now);
    std::optional<Date> pluggedSince(Date now) const;
    std::vector<Sample> since(Date since) const;
    std::vector<HistoryStore::DaySummary> dailySummaries(std::int64_t days, Date now);
    std::string csv() const;

private:
    using Eighths = std::int64_t;

    LocalClock localClock_;
    std::map<std::int64_t, Eighths> dayStarts_; ///< looked up once for each date
    std::optional<Eighths> lastSave_;
    bool keepsAll_ = false;

    static Eighths eighths(double seconds);
    static Date dateOf(Eighths instant);
    void prune(Date now);
    std::int64_t localDate(Eighths instant) const;
    Eighths dayStart(std::int64_t localDate);
    Eighths rangeStart(std::int64_t days, Date now);
    std::string json() const;
};
