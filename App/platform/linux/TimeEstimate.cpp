// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/TimeEstimate.h"

#include <cmath>

namespace {

constexpr double smoothingSeconds = 120; ///< a step in the load is taken over to 63 % after this
constexpr double distrustSeconds = 10;   ///< firmware may still tell the old rate for so long after a change
constexpr double settleSeconds = 15;     ///< no time is told earlier than this
constexpr double deriveSeconds = 60;     ///< a rate is derived from readings at least so far apart
constexpr double deriveWindow = 600;     ///< and at most so far, so that it follows the load
constexpr double staleRateSeconds = 300; ///< a rate that was not reported for so long is no rate any more
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

std::optional<double> TimeEstimate::derivedRate(const Reading& reading) {
    if (!reading.now)
        return std::nullopt;
    points_.push_back({reading.uptime, *reading.now});
    while (points_.size() > 2 && (reading.uptime - points_.front().uptime).count() > deriveWindow)
        points_.pop_front();
    const Duration apart = reading.uptime - points_.front().uptime;
    const double moved = *reading.now - points_.front().now;
    if (apart.count() < deriveSeconds || moved == 0)
        return std::nullopt;
    return along(reading.flow, moved / (apart.count() / 3600));
}

std::optional<double> TimeEstimate::currentRate(const Reading& reading) {
    const auto derived = derivedRate(reading);
    if (reading.rate)
        smooth(reading, along(reading.flow, *reading.rate));
    else if (smoothed_ && (reading.uptime - smoothedAt_).count() > staleRateSeconds)
        smoothed_.reset();
    // A reported rate that has died down says nothing more than none would.
    const auto rate = smoothed_ && *smoothed_ >= reading.slowest ? smoothed_ : derived;
    return rate && *rate > 0 && *rate >= reading.slowest ? rate : std::nullopt;
}

TimeEstimate::Minutes TimeEstimate::update(const Reading& reading) {
    if (!continues(reading)) {
        start_ = reading.uptime;
        readings_ = 0;
        smoothed_.reset();
        points_.clear();
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
