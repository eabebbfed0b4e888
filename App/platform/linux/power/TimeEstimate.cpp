// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/TimeEstimate.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double distrustSeconds = 10;   ///< firmware may report the old rate for this long after a change
constexpr double settleSeconds = 15;     ///< no time is given earlier than this
constexpr double deriveSeconds = 60;     ///< a rate is derived from readings at least this far apart
constexpr double staleRateSeconds = 300; ///< a rate that was not reported for this long no longer counts

// What follows was measured with benchmarks/TimeEstimateBenchmark.cpp; a quarter more or less changes little.

/// The time after which 63 % of a step in the reported rate is taken over.
constexpr double smoothingSeconds = 180;

/// The charge that moved in this time tells the present rate. It is also the weight of what an earlier run has shown.
constexpr double windowSeconds = 900;

/// The more hours one promises, the more hours one has to have seen: as many times what is left, and at most so long.
constexpr double lookBack = 2;
constexpr double mostWindowSeconds = 4 * 3600.0;

/// Rates that differ by less than this factor are of one kind.
constexpr double tolerance = 1.2;

/// Changes of the amount are kept at least this far apart: four hours of them stay few, however often one reads.
constexpr double apartSeconds = 15;

/// An amount that moves faster than this many times the reported rate was corrected by the gauge. Measured with a gauge
/// that drops 3 % at once: the time errs by 2.6 %, by 4.5 % if the drop counts as load, and now / rate by 2.9 %; 3 and
/// 5 mistake bursts for corrections, 15 misses some.
constexpr double impossiblyFast = 10;

/// Few chargers fill less than this part of a battery in an hour. A lower rate at the start is more likely to be that
/// of a busy moment, and told at face value it would promise a whole day.
constexpr double usualCharge = 0.2;

constexpr double leastSlope = 1; ///< of the taper; no pack that works tapers from the middle on

constexpr double mostHoursToEmpty = 48;
constexpr double mostHoursToFull = 20;

/// The rate in the direction of the flow; negative when it goes the other way.
double along(TimeEstimate::Flow flow, double rate) {
    return flow == TimeEstimate::Flow::discharging ? -rate : rate;
}

std::size_t index(TimeEstimate::Flow flow) {
    return static_cast<std::size_t>(flow);
}

std::optional<std::int64_t> wholeMinutes(double hours, double most) {
    if (!(hours >= 0 && hours <= most))
        return std::nullopt;
    return static_cast<std::int64_t>(std::floor(hours * 60));
}

} // namespace

void TimeEstimate::Range::add(double value) {
    lowest = std::min(lowest, value);
    highest = std::max(highest, value);
}

bool TimeEstimate::Range::allows(double value) const {
    return value * tolerance >= lowest && value <= highest * tolerance;
}

bool TimeEstimate::continues(const Reading& reading) const {
    // A second of slack: the two kernel clocks behind `slept` are not read at the very same moment.
    return last_ && reading.flow == last_->flow && reading.onExternalPower == last_->onExternalPower &&
           reading.batteries == last_->batteries && reading.slept - last_->slept < Duration(1) &&
           reading.uptime >= last_->uptime;
}

void TimeEstimate::begin(const Reading& reading) {
    if (last_ && (reading.batteries != last_->batteries || reading.uptime < last_->uptime)) {
        past_ = {};
        taper_ = {};
    } else if (run_.recent.highest > 0) {
        past_[index(last_->flow)] = run_;
        // Only a charge to the end has shown how it ends.
        if (last_->flow == Flow::charging && last_->full && last_->now && missing(*last_->now) < 0.05)
            taper_.slope = std::max(leastSlope, steepest_);
    }
    run_ = {};
    start_ = reading.uptime;
    readings_ = 0;
    smoothed_.reset();
    changes_.clear();
    startsAtChange_ = false;
    const auto& shown = past_[index(reading.flow)];
    taper_.plateau = shown && reading.full ? shown->rate / *reading.full : 0;
    steepest_ = 0;
}

double TimeEstimate::missing(double now) const {
    return (*last_->full - now) / *last_->full;
}

double TimeEstimate::level(double now) const {
    if (last_->flow == Flow::discharging || !last_->full)
        return now;
    return *last_->full * (1 - taper_.effort(missing(now)));
}

double TimeEstimate::left(const Reading& reading) const {
    return reading.flow == Flow::discharging ? *reading.now
                                             : level(*reading.now + reading.remaining) - level(*reading.now);
}

void TimeEstimate::smooth(const Reading& reading, double rate) {
    const bool mayTaper = reading.flow == Flow::charging && reading.full;
    const double share = mayTaper ? taper_.share(missing(*reading.now)) : 1;
    if (smoothed_) {
        const double seconds = (reading.uptime - smoothedAt_).count();
        *smoothed_ += (rate / share - *smoothed_) * (1 - std::exp(-seconds / smoothingSeconds));
    } else if (rate >= reading.slowest) {
        // A rate near 0 is firmware's way of saying that it does not know; it counts only after a real one.
        smoothed_ = rate / share;
    } else {
        return;
    }
    smoothedAt_ = reading.uptime;
    if (teaches(reading))
        run_.reported.add(rate);
}

void TimeEstimate::learnTaper(double missing, double plateau) {
    const double rate = plateau * taper_.share(missing);
    if (taper_.plateau == 0)
        taper_.plateau = rate;
    // Until it tapers, each rate shows how steep the fall is at least; close to the end, a percent of error says more.
    if (missing < 0.03)
        return;
    steepest_ = std::max(steepest_, (rate - ChargeTaper::endRate) / missing);
    taper_.slope = std::max(taper_.slope, steepest_);
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
    if (changes_.empty() || changes_.back().now != now) {
        if (changes_.size() > 2 &&
            (changes_.back().uptime - changes_[changes_.size() - 2].uptime).count() < apartSeconds)
            changes_.pop_back();
        changes_.push_back({reading.uptime, now, {}});
    }
    // QUIRK: some firmware holds the amount at "full" for a while after unplugging, and a coarse step lasts for
    // minutes. How long the first amount lasts says nothing about the load, so start at the first change.
    if (!startsAtChange_ && changes_.size() > 2 && since(changes_[1]) >= deriveSeconds) {
        changes_.pop_front();
        startsAtChange_ = true;
    }
    while (changes_.size() > 2 && since(changes_[1]) >= mostWindowSeconds)
        changes_.pop_front();
}

std::optional<double> TimeEstimate::derivedRate(const Reading& reading, double window) const {
    if (changes_.size() < 2)
        return std::nullopt;
    const auto isOutside = [&](const Change& change) { return (reading.uptime - change.uptime).count() >= window; };
    const Change& front = *(std::partition_point(changes_.begin() + 1, changes_.end() - 1, isOutside) - 1);
    const double hours = (reading.uptime - front.uptime).count() / 3600;
    const double moved = along(reading.flow, level(*reading.now) - level(front.now));
    if (hours < deriveSeconds / 3600 || moved <= 0)
        return std::nullopt;
    const double hoursToLastChange = (changes_.back().uptime - front.uptime).count() / 3600;
    if (hoursToLastChange < deriveSeconds / 3600)
        return moved / hours;
    // Between two coarse steps the rate would seem to fall, and to leap at the next one. Measured from change to change
    // it does neither; once the next step is overdue, the rate can be no higher than if the step came now.
    const double step = std::abs(level(changes_.back().now) - level(changes_[changes_.size() - 2].now));
    return std::min(moved / hoursToLastChange, (moved + step) / hours);
}

bool TimeEstimate::teaches(const Reading& reading) const {
    // A charge shows its plateau; once it may taper, one would have to know how.
    return reading.flow == Flow::discharging || run_.recent.highest == 0 || !reading.full ||
           missing(*reading.now) > 0.3;
}

std::optional<double> TimeEstimate::recentRate(const Reading& reading) {
    follow(reading);
    if (reading.rate)
        smooth(reading, along(reading.flow, *reading.rate));
    else if (smoothed_ && (reading.uptime - smoothedAt_).count() > staleRateSeconds)
        smoothed_.reset();
    const auto derived = derivedRate(reading, windowSeconds);
    // The measured drain also covers what happened between the readings, and is right where firmware rounds the rate or
    // reports it late. A reported rate that has died down says no more than a missing one.
    const bool isDead = !smoothed_ || *smoothed_ < reading.slowest;
    const auto rate = isDead || (derived && hasWholeWindow(reading)) ? derived : smoothed_;
    return rate && *rate > 0 && *rate >= reading.slowest ? rate : std::nullopt;
}

bool TimeEstimate::hasWholeWindow(const Reading& reading) const {
    return startsAtChange_ && (reading.uptime - changes_.front().uptime).count() >= windowSeconds;
}

std::optional<TimeEstimate::Past> TimeEstimate::past(const Reading& reading) const {
    const auto& shown = past_[index(reading.flow)];
    const ChargeTaper usual{.plateau = usualCharge, .slope = taper_.slope};
    // Near the end of a charge a low rate is no surprise.
    if (shown || reading.flow != Flow::charging || !reading.full || usual.share(missing(*reading.now)) < 1)
        return shown;
    const double rate = usualCharge * *reading.full;
    return Past{.rate = rate, .recent = {0, rate / tolerance}, .reported = {0, rate / tolerance}};
}

std::optional<double> TimeEstimate::currentRate(const Reading& reading) {
    const auto recent = recentRate(reading);
    if (!recent) {
        // Until the amount has moved, a machine that reports no rate is likely to do what it did.
        const auto& shown = past_[index(reading.flow)];
        const bool waits = !reading.rate && (reading.uptime - start_).count() < windowSeconds;
        return shown && waits ? std::optional(shown->rate) : std::nullopt;
    }
    const auto since = [&](const Change& change) { return (reading.uptime - change.uptime).count(); };
    if (hasWholeWindow(reading)) {
        changes_.back().recent = recent;
        if (teaches(reading))
            run_.recent.add(*recent);
    }
    if (reading.flow == Flow::charging && reading.full)
        learnTaper(missing(*reading.now), *recent / *reading.full);
    // How long has it been like this, and was it ever like this before? If so, that is one of its ways, and all of the
    // past speaks for what comes. If not, it has changed, perhaps for good, and what was before says nothing.
    const auto before = past(reading);
    Range seen;
    if (before)
        seen = hasWholeWindow(reading) ? before->recent : before->reported;
    const Range now{*recent, *recent};
    double stay = 0;
    auto change = changes_.rbegin();
    for (; change != changes_.rend() && (!change->recent || now.allows(*change->recent)); ++change)
        stay = since(*change);
    for (; change != changes_.rend(); ++change)
        if (change->recent)
            seen.add(*change->recent);
    const bool isTypical = seen.allows(*recent);
    const double asked = std::clamp(lookBack * left(reading) / *recent * 3600, windowSeconds, mostWindowSeconds);
    const double window = isTypical ? asked : std::min(asked, stay);

    double moved = 0;
    double weight = 0;
    if (const auto derived = derivedRate(reading, window); derived && startsAtChange_) {
        weight = std::min(since(changes_.front()), window);
        moved = *derived * weight;
    }
    if (before && isTypical) {
        const double more = std::clamp(asked - weight, 0.0, windowSeconds);
        weight += more;
        moved += before->rate * more;
    }
    const double mean = weight > 0 ? moved / weight : *recent;
    if (teaches(reading))
        run_.rate = mean;
    const double rate = *recent + (mean - *recent) * std::min(1.0, weight / windowSeconds);
    if (reading.flow == Flow::charging && reading.full) {
        const ChargeTaper even{.plateau = rate / *reading.full, .slope = taper_.slope};
        if (even.share(missing(*reading.now)) == 1)
            taper_ = even;
    }
    return rate;
}

TimeEstimate::Minutes TimeEstimate::update(const Reading& reading) {
    if (!continues(reading))
        begin(reading);
    last_ = reading;
    ++readings_;
    const double age = (reading.uptime - start_).count();
    settling_ = reading.flow != Flow::none && age < settleSeconds;
    if (reading.flow == Flow::none || age < distrustSeconds || !reading.now)
        return {};
    // Nothing left to store, and still charging: nobody knows when that ends, and it teaches nothing.
    if (reading.flow == Flow::charging && reading.remaining <= 0)
        return {};
    const auto rate = currentRate(reading);
    if (!rate || *rate <= 0 || *rate < reading.slowest || age < settleSeconds || readings_ < 2)
        return {};
    if (reading.flow == Flow::discharging)
        return {.toEmpty = wholeMinutes(left(reading) / *rate, mostHoursToEmpty), .toFull = std::nullopt};
    return {.toEmpty = std::nullopt, .toFull = wholeMinutes(left(reading) / *rate, mostHoursToFull)};
}
