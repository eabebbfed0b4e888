// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"

#include "history/HistoryCsv.h"
#include "history/HistoryFile.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <tuple>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr Duration longestHistory = 30 * 24h;
constexpr Duration longestWait = 300s; ///< for the next write while only the percentage changes
constexpr Duration staleHistory = 600s;
constexpr Duration longestGap = 900s; ///< between two samples of one plugged-in run

/// 30 days never fill this; a larger file is not a history.
constexpr std::size_t largestFile = std::size_t{64} << 20;

auto firstNotBefore(const std::deque<Sample>& samples, Date date) {
    return std::ranges::find_if(samples, [date](const Sample& sample) { return sample.date() >= date; });
}

} // namespace

std::filesystem::path HistoryStore::file(const Files& files) {
    return files.applicationSupportFolder() / "Velmora" / "history.json";
}

HistoryStore::HistoryStore(Files& files, const Clock& clock, const Calendar& calendar)
    : files_(files)
    , calendar_(calendar)
    , url(file(files)) {
    files_.createFolder(url.parent_path());
    if (std::optional<std::string> text = files_.read(url, largestFile))
        if (std::optional<std::deque<Sample>> loaded = decodeHistory(std::move(*text)))
            samples = std::move(*loaded);
    if (!std::ranges::is_sorted(samples, {}, &Sample::t)) // sorting allocates a copy even if nothing moves
        std::ranges::stable_sort(samples, {}, &Sample::t);
    prune(clock.now());
}

void HistoryStore::record(const BatteryState& state, Date now, bool force) {
    if (!state.hasBattery)
        return;
    const Sample sample{
        .t = now.time_since_epoch().count(), .p = state.percent, .c = state.isCharging, .a = state.pluggedIn};
    const bool changed = !samples.empty() && (sample.a != samples.back().a || sample.c != samples.back().c);
    if (!samples.empty() && !changed && !force && sample.p == samples.back().p)
        return;
    samples.push_back(sample);
    prune(now);
    if (changed || now - lastSave > longestWait)
        save(now);
}

std::optional<Date> HistoryStore::pluggedSinceEstimate(Date now) const {
    if (samples.empty() || !samples.back().a || now - samples.back().date() >= staleHistory)
        return std::nullopt;
    Date start = samples.back().date();
    for (auto sample = samples.rbegin() + 1; sample != samples.rend(); ++sample) {
        if (!sample->a || start - sample->date() > longestGap)
            break;
        start = sample->date();
    }
    return start;
}

std::vector<Sample> HistoryStore::samplesSince(Date since) const {
    return {firstNotBefore(samples, since), samples.end()};
}

std::string HistoryStore::csv() const {
    return historyCsv(samples);
}

void HistoryStore::save(Date now) {
    // Even if writing fails, so that a full disk is not tried again every minute.
    lastSave = now;
    if (const std::optional<std::string> text = encodeHistory(samples))
        std::ignore = files_.replace(url, *text);
}

void HistoryStore::prune(Date now) {
    samples.erase(samples.begin(), firstNotBefore(samples, now - longestHistory));
}
