// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/TimeEstimate.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double distrustSeconds = 10;   ///< firmware may still tell the old rate for so long after a change
constexpr double settleSeconds = 15;     ///< no time is told earlier than this
constexpr double deriveSeconds = 60;     ///< a rate is derived from readings at least so far apart
constexpr double staleRateSeconds = 300; ///< a rate that was not reported for so long is no rate any more

/// A step in the reported rate is taken over to 63 % after this. Measured with benchmarks/TimeEstimateBenchmark.cpp:
/// where the charge tapers off, 120, 180 and 300 s err by 47.0, 47.6 and 48.6 % (now / rate by 45.9); where it is taken
/// in under a changing load, they jump by 9.4, 7.3 and 6.0 % a minute (now / rate by 44.7).
constexpr double smoothingSeconds = 180;

/// What has gone out of the battery is looked at over this time. Measured: 600, 900 and 1200 s bring the sum of all
/// errors to 0.49, 0.47 and 0.46 of that of now / rate; but where the load rises for good, they err 1.05, 1.07 and 1.10
/// times as much.
constexpr double windowSeconds = 900;

/// An amount that moves faster than so many times the reported rate was corrected by the gauge. Measured with a gauge
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
        // A rate of nothing is how firmware says that it does not know; it only counts once there was a real one.
        smoothed_ = rate;
    } else {
        return;
    }
    smoothedAt_ = reading.uptime;
}

void TimeEstimate::follow(const Reading& reading) {
    const auto since = [&](const Change& change) { return (reading.uptime - change.uptime).count(); };
    const double now = *reading.now;
    // QUIRK: gauges correct themselves by some percent at once. That is no load; begin anew from there.
    if (!changes_.empty() && smoothed_ && *smoothed_ >= reading.slowest &&
        std::abs(now - changes_.back().now) > impossiblyFast * *smoothed_ * since(changes_.back()) / 3600) {
        changes_.clear();
        startsAtChange_ = true;
    }
    if (changes_.empty() || changes_.back().now != now)
        changes_.push_back({reading.uptime, now});
    // QUIRK: some firmware holds the amount at "full" for a while after unplugging, and coarse steps stand for minutes.
    // How long the first amount will have stood is no measure of the load; so begin at the first change.
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
    // Between two coarse steps the rate would seem to fall, and to leap at the next one. From change to change it does
    // neither; once the next step is overdue, it can be no higher than if that came now.
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
    // A reported rate that has died down says nothing more than none would.
    auto rate = smoothed_ && *smoothed_ >= reading.slowest ? smoothed_ : derived;
    // What has gone out also tells what happened between the readings, and is right where firmware rounds the rate or
    // tells it late; it counts for the part of the window that it covers. Not so while charging, where the rate falls
    // as the battery fills, so that the past says less about the rest.
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
    // Nothing left to store, and still charging: nobody knows when that ends.
    if (reading.remaining <= 0)
        return {};
    return {.toEmpty = std::nullopt, .toFull = wholeMinutes(reading.remaining / *rate, mostHoursToFull)};
}
