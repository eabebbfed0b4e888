// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoadSimulation.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

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

/// The time shown: whole minutes to empty or to full.
using Told = std::optional<std::int64_t>;
using Tell = std::function<Told(const Reading&)>;

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

struct Contender {
    std::string name;
    std::function<Tell()> make;
};

Contender contender(std::string name, Make make) {
    return {std::move(name), [make] { return underTheSameConditions(make); }};
}

Smoothed::Weight exponential(double seconds) {
    return [seconds](double passed, double /*age*/) { return 1 - std::exp(-passed / seconds); };
}

/// The mean since the run's start, until the run is longer than the smoothing time. The first reading counts for the
/// seconds that passed before it.
Smoothed::Weight meanThenExponential(double seconds) {
    return [smooth = exponential(seconds)](double passed, double age) {
        return std::max(smooth(passed, age), passed / (age + 15));
    };
}

std::vector<Contender> contenders() {
    std::vector<Contender> all;
    const auto smoothed = [&](const std::string& name, const Smoothed::Weight& weight) {
        all.push_back(contender(name, [weight] { return std::make_unique<Smoothed>(weight); }));
    };
    smoothed("now / rate", [](double, double) { return 1; });
    for (const int seconds : {60, 120, 180, 300, 600})
        smoothed("smoothed, T " + std::to_string(seconds) + " s", exponential(seconds));
    smoothed("0.005 a second", [](double passed, double) { return std::min(1.0, 0.005 * passed); });
    smoothed("mean of the run", [](double passed, double age) { return age > 0 ? passed / age : 1; });
    for (const int seconds : {180, 300, 600, 1200})
        smoothed("mean, then T " + std::to_string(seconds) + " s", meanThenExponential(seconds));
    for (const int seconds : {300, 600, 900, 1200, 1800})
        all.push_back(contender("moved in " + std::to_string(seconds) + " s",
                                [=] { return std::make_unique<Movement>(seconds, nullptr); }));
    all.push_back(contender("moved in the run",
                            [] { return std::make_unique<Movement>(std::numeric_limits<double>::max(), nullptr); }));
    for (const int seconds : {600, 900, 1200}) {
        all.push_back(contender("moved in " + std::to_string(seconds) + " s + T 180 s", [=] {
            return std::make_unique<Movement>(seconds, std::make_unique<Smoothed>(exponential(180)));
        }));
    }
    all.push_back({"ours", [] {
                       return [estimate = std::make_shared<TimeEstimate>()](const Reading& reading) -> Told {
                           const auto minutes = estimate->update(reading);
                           return reading.flow == Flow::charging ? minutes.toFull : minutes.toEmpty;
                       };
                   }});
    return all;
}

/// Nearer the end than this, rounding to a minute outweighs every rule, and nothing is counted.
constexpr double leastMinutes = 10;

/// The score of one rule on one kind of load. A division by zero gives NaN, which is shown as a dash.
struct Score {
    double errors = 0;
    double jumps = 0;
    double minutes = 0; ///< with a time shown at both ends
    double told = 0;
    double readings = 0;

    double error() const { return 100 * errors / told; }
    double jumpiness() const { return 100 * jumps / minutes; }
    double toldShare() const { return 100 * told / readings; }
};

void play(const SimulatedLoad& load, const Tell& tell, Score& score) {
    Told before;
    double trueBefore = 0;
    for (const auto& [reading, trueMinutes] : load.readings) {
        const Told told = tell(reading);
        if (trueMinutes < leastMinutes)
            return;
        ++score.readings;
        if (told) {
            ++score.told;
            score.errors += std::abs(static_cast<double>(*told) - trueMinutes) / trueMinutes;
        }
        if (told && before) {
            const double passed = trueBefore - trueMinutes;
            score.jumps += std::abs(static_cast<double>(*told - *before) + passed) / trueMinutes;
            score.minutes += passed;
        }
        before = told;
        trueBefore = trueMinutes;
    }
}

struct Line {
    std::string name;
    std::vector<Score> scores; ///< in the order of the loads
};

enum class Sums { shown, leftOut };

/// One row for each rule, one column for each load. The sums are over the loads for which the first rule has a value.
void print(const char* title, const std::vector<std::string>& loads, const std::vector<Line>& lines,
           double (Score::*value)() const, Sums sums) {
    std::printf("\n%s\n%-24s", title, "");
    for (const std::string& load : loads)
        std::printf(" %8s", load.c_str());
    std::puts(sums == Sums::shown ? "      sum  ratio  worst" : "");
    double firstSum = 0;
    for (const Line& line : lines) {
        std::printf("%-24s", line.name.c_str());
        double sum = 0;
        double worst = 0;
        for (std::size_t i = 0; i < loads.size(); ++i) {
            const double first = (lines.front().scores[i].*value)();
            const double own = (line.scores[i].*value)();
            if (std::isnan(own))
                std::printf(" %8s", "-");
            else
                std::printf(" %8.2f", own);
            if (!std::isnan(first)) {
                sum += own;
                worst = std::max(worst, own / first);
            }
        }
        if (&line == &lines.front())
            firstSum = sum;
        if (sums == Sums::shown)
            std::printf(" %8.1f %6.2f %6.2f", sum, sum / firstSum, worst);
        std::puts("");
    }
}

} // namespace

/// Arguments: the first seed (1) and the number of seeds (10).
int main(int argc, char** argv) {
    const auto first = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1;
    const auto count = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 10;
    const auto rules = contenders();
    std::vector<std::string> names;
    std::vector<Line> lines;
    lines.reserve(rules.size());
    for (const Contender& rule : rules)
        lines.push_back({rule.name, {}});
    for (auto seed = first; seed < first + count; ++seed) {
        const auto loads = simulateLoads(seed);
        names.clear();
        for (const SimulatedLoad& load : loads)
            names.push_back(load.name);
        for (std::size_t i = 0; i < rules.size(); ++i) {
            lines[i].scores.resize(loads.size());
            for (std::size_t j = 0; j < loads.size(); ++j)
                play(loads[j], rules[i].make(), lines[i].scores[j]);
        }
    }
    std::printf(
        "Seeds %llu to %llu. All rules see the same readings, start anew with each run, wait as long before they\n"
        "tell a time, and tell whole minutes. The last %.0f minutes are left out. Readings with no time count in\n"
        "the third table only. ratio: of the sum to that of now / rate. worst: the highest such ratio of one load.\n",
        first, first + count - 1, leastMinutes);
    print("Error: mean |told - true| / true, %", names, lines, &Score::error, Sums::shown);
    print("Jumpiness: mean |change of the told time beyond the time that passed| / true, % a minute", names, lines,
          &Score::jumpiness, Sums::shown);
    print("Readings with a time, %", names, lines, &Score::toldShare, Sums::leftOut);
}
