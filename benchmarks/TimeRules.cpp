// SPDX-License-Identifier: GPL-3.0-or-later
#include "TimeRules.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <memory>
#include <utility>

namespace {

using Flow = TimeEstimate::Flow;
using Reading = TimeEstimate::Reading;

/// Returns the rate to divide by, in the direction of the flow, or none.
class Rule {
public:
    virtual ~Rule() = default;
    /// `age` is the seconds since the run's first trusted reading.
    virtual std::optional<double> rate(const Reading& reading, double age) = 0;
};

using Make = std::function<std::unique_ptr<Rule>()>;

/// Moves towards each reading, with the weight that `weight` returns for the seconds since the last one.
class Smoothed final : public Rule {
public:
    using Weight = std::function<double(double seconds, double age)>;
    explicit Smoothed(Weight weight) : weight_(std::move(weight)) {}

    std::optional<double> rate(const Reading& reading, double age) override {
        if (!reading.rate)
            return std::nullopt;
        const double reported = std::abs(*reading.rate);
        value_ = value_ ? *value_ + (reported - *value_) * weight_(age - last_, age) : reported;
        last_ = age;
        return value_;
    }

private:
    Weight weight_;
    std::optional<double> value_;
    double last_ = 0;
};

/// The charge moved within the window, divided by its length. While the window is longer than the run, the filler
/// stands in for the missing part; without a filler the window is the run.
class Movement final : public Rule {
public:
    Movement(double window, std::unique_ptr<Rule> filler) : window_(window), filler_(std::move(filler)) {}

    std::optional<double> rate(const Reading& reading, double age) override {
        points_.push_back({age, *reading.now});
        while (points_.size() > 2 && age - points_[1].age >= window_)
            points_.pop_front();
        const double apart = age - points_.front().age;
        const double moved = std::abs(*reading.now - points_.front().now);
        if (const auto fill = filler_ ? filler_->rate(reading, age) : std::nullopt)
            return (moved * 3600 + *fill * std::max(0.0, window_ - apart)) / std::max(apart, window_);
        if (apart < 60 || moved == 0)
            return std::nullopt;
        return moved * 3600 / apart;
    }

private:
    struct Point {
        double age;
        double now;
    };
    double window_;
    std::unique_ptr<Rule> filler_;
    std::deque<Point> points_;
};

/// As UPower does: the rate of this reading; where none is reported, what has moved since one at least 15 s older.
class Momentary final : public Rule {
public:
    std::optional<double> rate(const Reading& reading, double age) override {
        if (reading.rate)
            return std::abs(*reading.rate);
        if (!last_ || *reading.now != last_->second) {
            if (last_ && age - last_->first >= 15)
                rate_ = std::abs(*reading.now - last_->second) * 3600 / (age - last_->first);
            last_ = {age, *reading.now};
        }
        return rate_;
    }

private:
    std::optional<std::pair<double, double>> last_;
    std::optional<double> rate_;
};

/// As PowerDevil does: UPower's rate, on battery smoothed with a weight of 0.005 a second.
class SmoothedOnBattery final : public Rule {
public:
    std::optional<double> rate(const Reading& reading, double age) override {
        const auto momentary = momentary_.rate(reading, age);
        if (!momentary || reading.flow == Flow::charging)
            return momentary;
        value_ = value_ ? *value_ + (*momentary - *value_) * std::min(1.0, 0.005 * (age - last_)) : *momentary;
        last_ = age;
        return value_;
    }

private:
    Momentary momentary_;
    std::optional<double> value_;
    double last_ = 0;
};

/// Applies a rule under the same conditions as ours: it starts anew with each run, waits as long, and has the same
/// limits.
Tell underTheSameConditions(const Make& make) {
    struct State {
        std::unique_ptr<Rule> rule;
        std::optional<Reading> last;
        double start = 0;
        std::optional<double> trusted;
        int readings = 0;
    };
    return [make, state = std::make_shared<State>()](const Reading& reading) -> Told {
        State& s = *state;
        const double uptime = reading.uptime.count();
        if (!s.last || s.last->flow != reading.flow || s.last->slept != reading.slept)
            s = {.rule = make(), .last = {}, .start = uptime, .trusted = {}, .readings = 0};
        s.last = reading;
        ++s.readings;
        if (uptime - s.start < 10)
            return std::nullopt;
        if (!s.trusted)
            s.trusted = uptime;
        const auto rate = s.rule->rate(reading, uptime - *s.trusted);
        if (!rate || *rate < reading.slowest || uptime - s.start < 15 || s.readings < 2)
            return std::nullopt;
        const bool charging = reading.flow == Flow::charging;
        const double amount = charging ? reading.remaining : *reading.now;
        const double hours = amount / *rate;
        if (hours > (charging ? 20 : 48) || (charging && amount <= 0))
            return std::nullopt;
        return static_cast<std::int64_t>(hours * 60);
    };
}

/// What is left to charge, as if the rate stayed as it is below the knee: above it, it is taken to fall in a straight
/// line to a twelfth.
Tell withTaper(double knee, const Tell& tell) {
    constexpr double least = 1.0 / 12;
    return [=](const Reading& reading) {
        if (reading.flow != Flow::charging)
            return tell(reading);
        const double above = 1 - knee;
        const auto share = [=](double left) { return std::min(1.0, least + (1 - least) * left / above); };
        const auto effort = [=](double left) {
            return above / (1 - least) * std::log(share(left) / least) + std::max(0.0, left - above);
        };
        const double full = *reading.full;
        const double left = (full - *reading.now) / full;
        Reading even = reading;
        even.remaining = full * (effort(left) - effort(left - reading.remaining / full));
        even.now = full * (1 - effort(left));
        if (even.rate)
            *even.rate /= share(left);
        return tell(even);
    };
}

Contender contender(std::string name, Make make) {
    return {std::move(name), [make] { return underTheSameConditions(make); }};
}

Smoothed::Weight exponential(double seconds) {
    return [seconds](double passed, double /*age*/) { return 1 - std::exp(-passed / seconds); };
}

Make smoothed(double seconds) {
    return [=] { return std::make_unique<Smoothed>(exponential(seconds)); };
}

Make moved(double seconds) {
    return [=] { return std::make_unique<Movement>(seconds, smoothed(180)()); };
}

} // namespace

std::vector<Contender> contenders() {
    std::vector<Contender> all{
        contender("now / rate", [] { return std::make_unique<Smoothed>([](double, double) { return 1; }); }),
        contender("UPower", [] { return std::make_unique<Momentary>(); }),
        contender("PowerDevil", [] { return std::make_unique<SmoothedOnBattery>(); }),
        contender("T 120 s", smoothed(120)),
        contender("T 180 s", smoothed(180)),
        contender("T 300 s", smoothed(300)),
        contender("mean of the run",
                  [] {
                      return std::make_unique<Smoothed>(
                          [](double passed, double age) { return age > 0 ? passed / age : 1; });
                  }),
        contender("moved in 900 s", [] { return std::make_unique<Movement>(900, nullptr); }),
        contender("moved in the run",
                  [] { return std::make_unique<Movement>(std::numeric_limits<double>::max(), nullptr); }),
    };
    for (const int seconds : {600, 900, 1200, 3600})
        all.push_back(contender("moved in " + std::to_string(seconds) + " s + T 180", moved(seconds)));
    for (const int percent : {75, 80}) {
        const std::string suffix = ", taper " + std::to_string(percent) + " %";
        const auto add = [&](const std::string& name, const Make& make) {
            all.push_back({name + suffix, [=] { return withTaper(percent / 100.0, underTheSameConditions(make)); }});
        };
        add("T 180 s", smoothed(180));
        add("moved, 900 s", moved(900));
    }
    all.push_back({"ours", [] {
                       return [estimate = std::make_shared<TimeEstimate>()](const Reading& reading) -> Told {
                           const auto minutes = estimate->update(reading);
                           return reading.flow == Flow::charging ? minutes.toFull : minutes.toEmpty;
                       };
                   }});
    return all;
}
