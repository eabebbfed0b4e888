// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PlainHistory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <set>
#include <utility>

namespace {

constexpr std::int64_t secondsOfDay = 86400;

std::int64_t floorDivide(std::int64_t number, std::int64_t divisor) {
    return (number - (((number % divisor) + divisor) % divisor)) / divisor;
}

/// Halves are rounded away from zero.
std::int64_t roundedQuotient(std::int64_t number, std::int64_t divisor) {
    const std::int64_t twice = (2 * std::abs(number) + divisor) / (2 * divisor);
    return number < 0 ? -twice : twice;
}

} // namespace

PlainHistory::PlainHistory(LocalClock localClock) : localClock_(std::move(localClock)) {}

void PlainHistory::load(const std::vector<Sample>& list, Date now) {
    samples.clear();
    for (const Sample& sample : list) {
        std::size_t place = samples.size();
        while (place > 0 && samples[place - 1].t > sample.t)
            --place;
        samples.insert(samples.begin() + static_cast<std::ptrdiff_t>(place), sample);
    }
    const std::vector<Sample> all = samples;
    prune(now);
    // A start that would drop more than half has a clock that cannot be believed.
    keepsAll_ = 2 * samples.size() < all.size();
    if (keepsAll_)
        samples = all;
}

void PlainHistory::record(const BatteryState& state, Date now, bool force) {
    if (!state.hasBattery)
        return;
    bool changed = false;
    if (!samples.empty()) {
        const Sample& last = samples.back();
        changed = state.pluggedIn != last.a || state.isCharging != last.c;
        if (!changed && !force && state.percent == last.p)
            return;
    }
    samples.push_back({now.time_since_epoch().count(), state.percent, state.isCharging, state.pluggedIn});
    prune(now);
    const bool isLongAgo = !lastSave_ || eighths(now.time_since_epoch().count()) - *lastSave_ > 300 * 8;
    const bool isAhead = lastSave_ && eighths(now.time_since_epoch().count()) < *lastSave_;
    if (changed || isLongAgo || isAhead)
        save(now);
}

void PlainHistory::save(Date now) {
    lastSave_ = eighths(now.time_since_epoch().count());
    ++timesSaved;
    if (!isDiskFull)
        file = json();
}

void PlainHistory::prune(Date now) {
    if (!keepsAll_)
        samples = since(now - Duration(2'592'000));
}

std::optional<Date> PlainHistory::pluggedSince(Date now) const {
    if (samples.empty() || !samples.back().a)
        return std::nullopt;
    if (eighths(now.time_since_epoch().count()) - eighths(samples.back().t) >= 600 * 8)
        return std::nullopt;
    std::size_t first = samples.size() - 1;
    while (first > 0 && samples[first - 1].a && eighths(samples[first].t) - eighths(samples[first - 1].t) <= 900 * 8)
        --first;
    return samples[first].date();
}

std::vector<Sample> PlainHistory::since(Date since) const {
    std::vector<Sample> list;
    for (const Sample& sample : samples) {
        if (!list.empty() || sample.t >= since.time_since_epoch().count())
            list.push_back(sample);
    }
    return list;
}

std::vector<HistoryStore::DaySummary> PlainHistory::dailySummaries(std::int64_t days, Date now) {
    const std::vector<Sample> list = since(dateOf(rangeStart(days, now)));
    std::set<std::int64_t> dates;
    for (const Sample& sample : list)
        dates.insert(localDate(eighths(sample.t)));
    std::vector<HistoryStore::DaySummary> summaries;
    for (const std::int64_t date : dates) {
        std::int64_t lowest = 100;
        std::int64_t highest = 0;
        Eighths counted = 0;
        Eighths charging = 0;
        std::int64_t percentEighths = 0;
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (localDate(eighths(list[i].t)) != date)
                continue;
            lowest = std::min(lowest, list[i].p);
            highest = std::max(highest, list[i].p);
            const Eighths lasted = i + 1 < list.size() ? eighths(list[i + 1].t) - eighths(list[i].t) : 0;
            if (lasted <= 0 || lasted > 900 * 8)
                continue;
            counted += lasted;
            percentEighths += lasted * list[i].p;
            charging += list[i].c ? lasted : 0;
        }
        summaries.push_back({.day = dateOf(dayStart(date)),
                             .avgPercent = counted > 0 ? roundedQuotient(percentEighths, counted) : highest,
                             .minPercent = lowest,
                             .maxPercent = highest,
                             .chargingMinutes = charging / (60 * 8)});
    }
    std::ranges::reverse(summaries);
    return summaries;
}

std::string PlainHistory::csv() const {
    std::string text = "timestamp,percent,charging,plugged_in\n";
    for (const Sample& sample : samples) {
        const std::time_t seconds = floorDivide(eighths(sample.t), 8);
        std::tm fields{};
        gmtime_r(&seconds, &fields);
        std::array<char, 32> timestamp{};
        std::strftime(timestamp.data(), timestamp.size(), "%Y-%m-%dT%H:%M:%SZ", &fields);
        text += std::string(timestamp.data()) + "," + std::to_string(sample.p) + (sample.c ? ",true" : ",false") +
                (sample.a ? ",true\n" : ",false\n");
    }
    return text;
}

std::string PlainHistory::json() const {
    static constexpr std::array<const char*, 8> fractions{"", ".125", ".25", ".375", ".5", ".625", ".75", ".875"};
    std::string text;
    for (const Sample& sample : samples) {
        const Eighths distance = std::abs(eighths(sample.t));
        text += text.empty() ? "" : ",";
        text += std::string(R"({"t":)") + (sample.t < 0 ? "-" : "") + std::to_string(distance / 8) +
                fractions.at(static_cast<std::size_t>(distance % 8));
        text += R"(,"p":)" + std::to_string(sample.p);
        text += std::string(R"(,"c":)") + (sample.c ? "true" : "false");
        text += std::string(R"(,"a":)") + (sample.a ? "true}" : "false}");
    }
    return "[" + text + "]";
}

PlainHistory::Eighths PlainHistory::eighths(double seconds) {
    return std::llround(seconds * 8);
}

Date PlainHistory::dateOf(Eighths instant) {
    return Date(Duration(static_cast<double>(instant) / 8));
}

/// Counted in days from 1970-01-01.
std::int64_t PlainHistory::localDate(Eighths instant) const {
    return floorDivide(localClock_(floorDivide(instant, 8)), secondsOfDay);
}

/// The first instant of the date, found by trying every minute that can belong to it.
PlainHistory::Eighths PlainHistory::dayStart(std::int64_t localDate) {
    const auto [place, isNew] = dayStarts_.try_emplace(localDate, 0);
    if (isNew) {
        std::int64_t minute = (localDate - 2) * secondsOfDay;
        while (floorDivide(localClock_(minute), secondsOfDay) != localDate)
            minute += 60;
        place->second = minute * 8;
    }
    return place->second;
}

/// The time of the start of today, that many days earlier; where the clock skips it, right after the gap.
PlainHistory::Eighths PlainHistory::rangeStart(std::int64_t days, Date now) {
    const Eighths today = dayStart(localDate(eighths(now.time_since_epoch().count())));
    const std::int64_t wanted = localClock_(today / 8) - (days - 1) * secondsOfDay;
    std::optional<std::int64_t> afterTheGap;
    for (std::int64_t minute = wanted - 2 * secondsOfDay; minute <= wanted + 2 * secondsOfDay; minute += 60) {
        const std::int64_t local = localClock_(minute);
        if (local == wanted)
            return minute * 8;
        if (local > wanted && !afterTheGap)
            afterTheGap = minute;
    }
    return afterTheGap.value() * 8;
}
