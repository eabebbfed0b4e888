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

/// The reported rate is averaged over so long, and its first value counts as if it had lasted for so long.
constexpr double reportedSeconds = 300;
constexpr double firstReportSeconds = 120;

/// What flowed in this time outweighs the reported rate.
constexpr double trustedSeconds = 900;

/// The more hours are left, the more hours the mean of what flowed covers: twice as many, and at most so many seconds.
constexpr double mostMeanSeconds = 4 * 3600.0;

/// What earlier runs have shown counts as if it had lasted for so long.
constexpr double earlierSeconds = 1800;

/// The mean of so many seconds is compared with the earlier ones: is it a load that was there before?
constexpr double recentSeconds = 240;

/// Rates that differ by less than this factor are of one kind.
constexpr double tolerance = 1.4;

/// On battery, so are means of some minutes. A young run has shown little of what it does, so this many seconds divided
/// by its age are added to the factor: it is 2 after 50 minutes, 1.5 after two hours.
constexpr double meanTolerance = 1.2;
constexpr double youngSeconds = 2400;

/// An amount that moves faster than this many times the reported rate was corrected by the gauge. Measured with a gauge
/// that drops 3 % at once: the time errs by 2.6 %, by 4.5 % if the drop counts as load, and now / rate by 2.9 %; 3 and
/// 5 mistake bursts for corrections, 15 misses some.
constexpr double impossiblyFast = 10;

/// Few chargers fill less than this part of a battery in an hour. A lower rate at the start is more likely to be that
/// of a busy moment, and told at face value it would promise a whole day.
constexpr double usualCharge = 1 / 6.0;

constexpr double leastSlope = 1; ///< of the taper; no pack that works tapers from the middle on

/// The told time is corrected within this part of what is left.
constexpr double correctionPart = 0.25;

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
    return static_cast<std::int64_t>(hours * 60);
}

} // namespace

void TimeEstimate::Mean::add(double value, double lasted, double most) {
    seconds = std::min(seconds + lasted, most);
    rate += (value - rate) * std::min(1.0, lasted / seconds);
}

void TimeEstimate::Range::add(double value) {
    lowest = std::min(lowest, value);
    highest = std::max(highest, value);
}

bool TimeEstimate::Range::allows(double value, double factor) const {
    return highest == 0 || (value * factor >= lowest && value <= highest * factor);
}

bool TimeEstimate::continues(const Reading& reading) const {
    // A second of slack: the two kernel clocks behind `slept` are not read at the very same moment.
    return last_ && reading.flow == last_->flow && reading.onExternalPower == last_->onExternalPower &&
           reading.batteries == last_->batteries && reading.slept - last_->slept < Duration(1) &&
           reading.uptime >= last_->uptime;
}

void TimeEstimate::begin(const Reading& reading) {
    if (last_ && (reading.batteries != last_->batteries || reading.uptime < last_->uptime)) {
        known_ = {};
        taper_ = {};
    } else if (last_ && last_->flow == Flow::charging && !isYoung_ && last_->full && last_->now &&
               missing(*last_->now) < 0.05) {
        // Only a charge to the end has shown how it ends.
        taper_.slope = std::max(leastSlope, steepest_);
    }
    start_ = reading.uptime;
    readings_ = 0;
    reported_ = {};
    first_.reset();
    counted_.reset();
    step_ = 0;
    recent_ = {};
    isYoung_ = true;
    end_.reset();
    steepest_ = 0;
    Known& known = known_[index(reading.flow)];
    taper_.plateau = reading.full ? known.shown.rate / *reading.full : 0;
    if (known.shown.seconds == 0)
        known = usual(reading);
    else
        known.mean = {known.shown.rate, std::min(known.shown.seconds, earlierSeconds)};
}

TimeEstimate::Known TimeEstimate::usual(const Reading& reading) {
    // In the last tenth of a charge a low rate is no surprise.
    if (reading.flow != Flow::charging || !reading.rate || !reading.now || !reading.full ||
        *reading.now > 0.9 * *reading.full)
        return {};
    const double rate = usualCharge * *reading.full;
    const Range below{0, rate / tolerance};
    return {.mean = {rate, trustedSeconds}, .shown = {}, .means = below, .reported = below};
}

bool TimeEstimate::teaches(const Reading& reading) const {
    // A charge shows its plateau; once it may taper, one would have to know how.
    return reading.flow == Flow::discharging || !reading.full || missing(*reading.now) > 0.3;
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

double TimeEstimate::moved(const Amount& since) const {
    return along(last_->flow, level(*last_->now) - level(since.now));
}

void TimeEstimate::smooth(const Reading& reading, double rate) {
    // A rate near 0 is firmware's way of saying that it does not know; it counts only after a real one.
    const bool isFirst = reported_.seconds == 0;
    if (isFirst && rate < reading.slowest)
        return;
    const bool mayTaper = reading.flow == Flow::charging && reading.full;
    const double share = mayTaper ? taper_.share(missing(*reading.now)) : 1;
    const double lasted = isFirst ? firstReportSeconds : (reading.uptime - reportedAt_).count();
    reported_.add(rate / share, lasted, reportedSeconds);
    reportedAt_ = reading.uptime;
    if (!isYoung_ && teaches(reading))
        known_[index(reading.flow)].reported.add(rate);
}

void TimeEstimate::learnTaper(double missing, double now, double plateau) {
    const double rate = now * taper_.share(missing);
    if (taper_.plateau == 0)
        taper_.plateau = rate;
    // Until it tapers, each rate shows how steep the fall is at least; close to the end, a percent of error says more.
    if (missing >= 0.03) {
        steepest_ = std::max(steepest_, (rate - ChargeTaper::endRate) / missing);
        taper_.slope = std::max(taper_.slope, steepest_);
    }
    const ChargeTaper even{.plateau = plateau, .slope = taper_.slope};
    if (even.share(missing) == 1)
        taper_ = even;
}

void TimeEstimate::follow(const Reading& reading, Known& known) {
    const Amount here{reading.uptime, *reading.now};
    if (!first_)
        first_ = latest_ = here;
    // Coarse steps last for minutes, so that only an amount that has just changed tells what has flowed.
    if (latest_.now == here.now)
        return;
    latest_ = here;
    const Amount& since = counted_ ? *counted_ : *first_;
    const double hours = (here.uptime - since.uptime).count() / 3600;
    // QUIRK: some firmware holds the amount at "full" for a while after unplugging, and a coarse step may have begun at
    // any time. How long the first amount lasts says nothing about the load, so count from the first change.
    // QUIRK: gauges correct themselves by some percent at once. That is not load, either.
    const bool isCorrection =
        !isDead(reading) && std::abs(here.now - since.now) > impossiblyFast * reported_.rate * hours;
    if (counted_ && !isCorrection && hours < deriveSeconds / 3600)
        return;
    const double amount = counted_ && !isCorrection ? moved(since) : 0;
    counted_ = here;
    if (amount <= 0)
        return;
    step_ = amount;
    const double asked = known.mean.seconds > 0 ? 2 * 3600 * left(reading) / known.mean.rate : 0;
    known.mean.add(amount / hours, hours * 3600, std::clamp(asked, trustedSeconds, mostMeanSeconds));
    if (teaches(reading))
        known.shown = known.mean;
    recent_.add(amount / hours, hours * 3600, std::numeric_limits<double>::max());
    if (recent_.seconds < recentSeconds)
        return;
    // Was it ever like this before? If not, it has changed, perhaps for good, and what was before says nothing. But a
    // charge that slows down is beside a busy machine, and that passes.
    const bool isCharging = reading.flow == Flow::charging;
    const double factor = isCharging ? tolerance : meanTolerance + youngSeconds / (reading.uptime - start_).count();
    if (!known.means.allows(recent_.rate, factor) && (!isCharging || recent_.rate > known.means.highest))
        known.mean = recent_;
    if (teaches(reading))
        known.means.add(recent_.rate);
    recent_ = {};
    isYoung_ = false;
}

bool TimeEstimate::isDead(const Reading& reading) const {
    return reported_.seconds == 0 || reported_.rate < reading.slowest;
}

std::optional<double> TimeEstimate::currentRate(const Reading& reading) {
    if (reading.rate)
        smooth(reading, along(reading.flow, *reading.rate));
    else if ((reading.uptime - reportedAt_).count() > staleRateSeconds)
        reported_ = {};
    Known& known = known_[index(reading.flow)];
    follow(reading, known);
    const bool isReported = !isDead(reading);
    // A run may begin with another load or charger than the last one.
    if (isYoung_ && isReported && !known.reported.allows(reported_.rate, tolerance)) {
        known = usual(reading);
        if (!known.reported.allows(reported_.rate, tolerance))
            known = {};
    }
    Mean mean = known.mean;
    const auto since = [&](const Amount& amount) { return (reading.uptime - amount.uptime).count(); };
    // Until the amount has moved, a machine that reports no rate is likely to do what it did, but not for ever.
    if (!isReported && step_ == 0 && (known.shown.seconds == 0 || since(*first_) >= trustedSeconds)) {
        const double seconds = since(*first_);
        if (seconds < deriveSeconds)
            return std::nullopt;
        // The next step of a coarse gauge may well take as long as the first.
        mean = {moved(*first_) * 3600 / std::max(seconds / 2, seconds - since(latest_)), seconds};
    } else if (step_ > 0 && mean.rate * since(*counted_) > 3600 * step_) {
        // The next step is overdue: the rate can be no higher than if it came now.
        const double most = (moved(*counted_) + step_) * 3600 / since(*counted_);
        mean.add(std::min(most, mean.rate), since(*counted_), std::max(mean.seconds, trustedSeconds));
    }
    // What has flowed also covers what happened between the readings, and is right where firmware rounds the rate or
    // reports it late.
    double rate = mean.rate;
    if (isReported && mean.seconds < trustedSeconds)
        rate += (reported_.rate - rate) * (1 - mean.seconds / trustedSeconds);
    if (rate <= 0 || rate < reading.slowest)
        return std::nullopt;
    if (reading.flow == Flow::charging && reading.full)
        learnTaper(missing(*reading.now), (isReported ? reported_.rate : rate) / *reading.full, rate / *reading.full);
    return rate;
}

double TimeEstimate::hoursLeft(const Reading& reading, double rate) const {
    // Between two steps of a coarse gauge it flows on unseen, so that the time would stand still and then drop. On the
    // average, half a step is left when the amount changes.
    const double step = step_ / rate;
    const double unseen = (reading.uptime - latest_.uptime).count() / 3600;
    return std::max(0.0, left(reading) / rate + step / 2 - std::min(unseen, step));
}

double TimeEstimate::steady(const Reading& reading, double hours) {
    if (end_ && hours > 0) {
        const double told = (*end_ - reading.uptime).count() / 3600;
        const double passed = (reading.uptime - toldAt_).count() / 3600;
        const double nearer = told + (hours - told) * std::min(1.0, passed / (correctionPart * hours));
        hours = std::clamp(nearer, hours / mostOff_, hours * mostOff_);
    }
    end_ = reading.uptime + Duration(hours * 3600);
    toldAt_ = reading.uptime;
    return hours;
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
    if (!rate || age < settleSeconds || readings_ < 2)
        return {};
    const double hours = steady(reading, hoursLeft(reading, *rate));
    if (reading.flow == Flow::discharging)
        return {.toEmpty = wholeMinutes(hours, mostHoursToEmpty), .toFull = std::nullopt};
    return {.toEmpty = std::nullopt, .toFull = wholeMinutes(hours, mostHoursToFull)};
}
