// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <map>

namespace {

constexpr double longestInterval = 900; ///< seconds; what happened in a longer gap, such as sleep, is unknown

/// The running totals of one day.
struct Acc {
    double w = 0;   ///< seconds in intervals that count
    double sum = 0; ///< seconds times percent
    std::int64_t lo = 100;
    std::int64_t hi = 0;
    double chg = 0; ///< of these, the seconds spent charging
};

/// Rounds halves away from zero.
std::int64_t rounded(double value) {
    using Limits = std::numeric_limits<std::int64_t>;
    const double whole = std::round(value);
    if (whole >= static_cast<double>(Limits::max()))
        return Limits::max();
    return whole <= static_cast<double>(Limits::min()) ? Limits::min() : static_cast<std::int64_t>(whole);
}

HistoryStore::DaySummary summary(Date day, const Acc& acc) {
    return {.day = day,
            .avgPercent = acc.w > 0 ? rounded(acc.sum / acc.w) : acc.hi,
            .minPercent = acc.lo,
            .maxPercent = acc.hi,
            .chargingMinutes = static_cast<std::int64_t>(acc.chg / 60)};
}

/// When the first of so many local days began, of which the last is now.
Date firstDay(const Calendar& calendar, std::int64_t days, Date now) {
    return calendar.addingDays(calendar.day(now).start, 1 - days).value_or(now);
}

} // namespace

bool HistoryStore::hasDailySummaries(std::int64_t days, Date now) const {
    return !samplesSince(firstDay(calendar_, days, now)).empty();
}

std::vector<HistoryStore::DaySummary> HistoryStore::dailySummaries(std::int64_t days, Date now) const {
    std::map<Date, Acc, std::greater<>> accounts;
    // Looking up the day takes longer than everything else here, and most samples are from the same day as the one
    // before.
    Calendar::Day day{};
    Date asked{};
    Acc* account = nullptr;
    const SampleList::Tail found = samplesSince(firstDay(calendar_, days, now));
    for (std::size_t i = 0; i < found.size(); ++i) {
        const Sample sample = found[i];
        if (const Date date = sample.date(); account == nullptr || date < asked || date >= day.until) {
            day = calendar_.day(date);
            asked = date;
            account = &accounts[day.start];
        }
        Acc& acc = *account;
        acc.lo = std::min(acc.lo, sample.p);
        acc.hi = std::max(acc.hi, sample.p);
        // An interval counts wholly for the day that it begins in.
        const double interval = i + 1 < found.size() ? found[i + 1].t - sample.t : 0;
        if (interval > 0 && interval <= longestInterval) {
            acc.w += interval;
            acc.sum += interval * static_cast<double>(sample.p);
            if (sample.c)
                acc.chg += interval;
        }
    }
    std::vector<DaySummary> summaries;
    summaries.reserve(accounts.size());
    for (const auto& [key, acc] : accounts)
        summaries.push_back(summary(key, acc));
    return summaries;
}
