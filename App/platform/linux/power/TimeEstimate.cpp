// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/TimeEstimate.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double distrustSeconds = 10;   ///< firmware may report the old rate for this long after a change
constexpr double settleSeconds = 15;     ///< no time is given earlier than this
constexpr double deriveSeconds = 60;     ///< a rate is derived from readings at least this far apart
constexpr double staleRateSeconds = 300; ///< a rate that was not reported for this long no longer counts

/// The time after which 63 % of a step in the reported rate is taken over. Measured with
/// benchmarks/TimeEstimateBenchmark.cpp: where charging tapers off, 120, 180 and 300 s err by 47.0, 47.6 and 48.6 %
/// (now / rate by 45.9); while charging under a changing load, they jump by 9.4, 7.3 and 6.0 % a minute (now / rate by
/// 44.7).
constexpr double smoothingSeconds = 180;

/// The drain of the battery is averaged over this time. Measured: 600, 900 and 1200 s bring the sum of all errors to
/// 0.49, 0.47 and 0.46 of that of now / rate; but where the load rises for good, they err 1.05, 1.07 and 1.10 times as
/// much.
constexpr double windowSeconds = 900;

/// An amount that moves faster than this many times the reported rate was corrected by the gauge. Measured with a gauge
/// that drops 3 % at once: the time errs by 2.6 %, by 4.5 % if the drop counts as load, and now / rate by 2.9 %; 3 and
/// 5 mistake bursts for corrections, 15 misses some.
constexpr double impossiblyFast = 10;

constexpr double mostHoursToEmpty = 48;
constexpr double mostHoursToFull = 20;

/// The rate in the direction of the flow; negative when it goes the other way.
double along(TimeEstimate::Flow flow, double rate) {
    return flow == TimeEstimate::Flow::discharging ? -rate : rate;
}

std::optional<std::int64_t> wholeMinutes(double hours, double most) {
    if (!(hours >= 0 && hours <= most))
        return std::nullopt;
    return static_cast<std::int64_t>(std::floor(hours * 60));
}

} // namespace

bool TimeEstimate::continues(const Reading& reading) const {
    // A second of slack: the two kernel clocks behind `slept` are not read at the very same moment.
    return last_ && reading.flow == last_->flow && reading.onExternalPower == last_->onExternalPower &&
           reading.batteries == last_->batteries && reading.slept - last_->slept < Duration(1) &&
           reading.uptime >= last_->uptime;
}

void TimeEstimate::smooth(const Reading& reading, double rate) {
    if (smoothed_) {
        const double seconds = (reading.uptime - smoothedAt_).count();
        *smoothed_ += (rate - *smoothed_) * (1 - std::exp(-seconds / smoothingSeconds));
    } else if (rate >= reading.slowest) {
        // A rate near 0 is firmware's way of saying that it does not know; it counts only after a real one.
        smoothed_ = rate;
    } else {
        return;
    }
    smoothedAt_ = reading.uptime;
}

void TimeEstimate::follow(const Reading& reading) {
    const auto since = [&](const Change& change) { return (reading.uptime - change.uptime).count(); };
    const double now = *reading.now;
    // QUIRK: gauges correct themselves by some percent at once. That is not load, so start again from there.
    if (!changes_.empty() && smoothed_ && *smoothed_ >= reading.slowest &&
        std::abs(now - changes_.back().now) > impossiblyFast * *smoothed_ * since(changes_.back()) / 3600) {
        changes_.clear();
        startsAtChange_ = true;
    }
    if (changes_.empty() || changes_.back().now != now)
        changes_.push_back({reading.uptime, now});
    // QUIRK: some firmware holds the amount at "full" for a while after unplugging, and a coarse step lasts for
    // minutes. How long the first amount lasts says nothing about the load, so start at the first change.
    if (!startsAtChange_ && changes_.size() > 2 && since(changes_[1]) >= deriveSeconds) {
        changes_.pop_front();
        startsAtChange_ = true;
    }
    while (changes_.size() > 2 && since(changes_[1]) >= windowSeconds)
        changes_.pop_front();
}

std::optional<double> TimeEstimate::derivedRate(const Reading& reading) const {
    if (!reading.now || changes_.size() < 2)
        return std::nullopt;
    const double hours = (reading.uptime - changes_.front().uptime).count() / 3600;
    const double moved = along(reading.flow, *reading.now - changes_.front().now);
    if (hours < deriveSeconds / 3600 || moved <= 0)
        return std::nullopt;
    const double hoursToLastChange = (changes_.back().uptime - changes_.front().uptime).count() / 3600;
    if (hoursToLastChange < deriveSeconds / 3600)
        return moved / hours;
    // Between two coarse steps the rate would seem to fall, and to leap at the next one. Measured from change to change
    // it does neither; once the next step is overdue, the rate can be no higher than if the step came now.
    const double step = std::abs(changes_.back().now - changes_[changes_.size() - 2].now);
    return std::min(moved / hoursToLastChange, (moved + step) / hours);
}

std::optional<double> TimeEstimate::currentRate(const Reading& reading) {
    if (reading.now)
        follow(reading);
    if (reading.rate)
        smooth(reading, along(reading.flow, *reading.rate));
    else if (smoothed_ && (reading.uptime - smoothedAt_).count() > staleRateSeconds)
        smoothed_.reset();
    const auto derived = derivedRate(reading);
    // A reported rate that has died down says no more than a missing one.
    auto rate = smoothed_ && *smoothed_ >= reading.slowest ? smoothed_ : derived;
    // The measured drain also covers what happened between the readings, and is right where firmware rounds the rate or
    // reports it late; it is weighted by the part of the window that it covers. Not while charging: there the rate
    // falls as the battery fills, so the past says less about the rest.
    if (rate && derived && reading.flow == Flow::discharging && startsAtChange_) {
        const double covered = (reading.uptime - changes_.front().uptime).count() / windowSeconds;
        *rate += (*derived - *rate) * std::min(covered, 1.0);
    }
    return rate && *rate > 0 && *rate >= reading.slowest ? rate : std::nullopt;
}

TimeEstimate::Minutes TimeEstimate::update(const Reading& reading) {
    if (!continues(reading)) {
        start_ = reading.uptime;
        readings_ = 0;
        smoothed_.reset();
        changes_.clear();
        startsAtChange_ = false;
    }
    last_ = reading;
    ++readings_;
    const double age = (reading.uptime - start_).count();
    settling_ = reading.flow != Flow::none && age < settleSeconds;
    if (reading.flow == Flow::none || age < distrustSeconds)
        return {};
    const auto rate = currentRate(reading);
    if (!rate || !reading.now || age < settleSeconds || readings_ < 2)
        return {};
    if (reading.flow == Flow::discharging)
        return {.toEmpty = wholeMinutes(*reading.now / *rate, mostHoursToEmpty), .toFull = std::nullopt};
    // Nothing left to store, and still charging: nobody knows when that will end.
    if (reading.remaining <= 0)
        return {};
    return {.toEmpty = std::nullopt, .toFull = wholeMinutes(reading.remaining / *rate, mostHoursToFull)};
}
