// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/NaiveAlertEngine.h"
#include "support/Dice.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/FakeMainLoop.h"
#include "support/FakeUserDefaults.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

/// One run of the engine with all that goes into it.
struct Step {
    BatteryState state;
    std::optional<Date> since;
    Date now;
    Prefs prefs;
    bool canDeliver = false;
    bool prime = false;
    std::optional<Value> mark; ///< what somebody writes in the place of the health mark before
};

template <class T>
std::string shown(const std::optional<T>& value) {
    return value ? std::to_string(*value) : "none";
}

std::ostream& operator<<(std::ostream& out, const Step& step) {
    const BatteryState& state = step.state;
    const Prefs& prefs = step.prefs;
    out << std::fixed << "now " << step.now.time_since_epoch().count() << (step.prime ? " PRIME" : "")
        << (step.canDeliver ? "" : " held back");
    if (step.mark)
        out << " mark:=" << (step.mark->boolean() ? std::to_string(*step.mark->boolean()) : "no boolean");
    if (!state.hasBattery)
        return out << " | no battery";
    out << " | " << state.percent << "% " << (state.pluggedIn ? "plugged" : "on battery");
    if (step.since)
        out << " for " << (step.now - *step.since).count() << " s";
    out << (state.lowPowerMode ? " low power mode" : "") << " capacity " << shown(state.fullCapacity) << " of "
        << shown(state.designCapacity);
    const auto rule = [](bool enabled, std::int64_t value) { return (enabled ? "" : "off ") + std::to_string(value); };
    return out << " | limit " << rule(prefs.limitEnabled, prefs.limit) << (prefs.repeatReminder ? " repeated" : "")
               << ", low " << rule(prefs.lowEnabled, prefs.low) << ", suggest "
               << rule(prefs.lowPowerEnabled, prefs.lowPowerAt) << ", long " << rule(prefs.longEnabled, prefs.longHours)
               << ", health " << (prefs.healthEnabled ? "on" : "off");
}

/// Somebody with a laptop who does everything, and most of it near the thresholds.
class World {
public:
    explicit World(std::uint64_t seed) : dice_(seed) {
        state_.hasBattery = true;
        state_.percent = 50;
        state_.designCapacity = 5000;
        state_.fullCapacity = 4500;
        FakeClock clock;
        FakeMainLoop loop(clock);
        FakeUserDefaults fresh(loop);
        prefs_ = Prefs::current(fresh);
        prefs_.quietEnabled = dice_.chance(25);
        hectic_ = dice_.chance(30);
    }

    Step next() {
        letTimePass();
        Step step;
        if (dice_.chance(hectic_ ? 60 : 12))
            charge();
        if (dice_.chance(hectic_ ? 20 : 6))
            plugOrUnplug();
        if (dice_.chance(3))
            state_.hasBattery = !state_.hasBattery;
        else if (!state_.hasBattery)
            state_.hasBattery = dice_.coin();
        if (dice_.chance(4))
            state_.lowPowerMode = !state_.lowPowerMode;
        if (dice_.chance(10))
            age();
        if (dice_.chance(hectic_ ? 15 : 5))
            changePreferences();
        if (dice_.chance(2))
            snoozed_ = now_ + 1h;
        if (dice_.chance(4))
            snoozed_.reset();
        if (dice_.chance(4))
            moveSince();
        if (dice_.chance(1))
            step.mark = dice_.of<Value>({true, false, "yes", 1});
        step.state = state_;
        step.since = since_;
        step.now = now_;
        step.prefs = prefs_;
        step.prime = dice_.chance(3);
        step.canDeliver = !step.prime && !(snoozed_ && *snoozed_ > now_) && !prefs_.inQuietHours(now_, calendar_);
        return step;
    }

private:
    Dice dice_;
    FakeCalendar calendar_;
    Date now_{1'700'000'000s};
    BatteryState state_;
    Prefs prefs_;
    std::optional<Date> since_;
    std::optional<Date> snoozed_;
    bool hectic_ = false;

    void letTimePass() {
        // Minutes, as the refresh timer has them; now and then what lies around the spacing of the reminders, a long
        // time, or a clock that is set.
        if (dice_.chance(70))
            now_ += dice_.of<Duration>({60s, 60s, 60s, 65s, 70s});
        else if (dice_.chance(80))
            now_ += dice_.of<Duration>({0s, 1s, 230s, 289s, Duration(289.999), 290s, Duration(290.001), 291s, 1h});
        else
            now_ += dice_.of<Duration>({-1s, -60s, -290s, -1h, -24h, 8h, 24h, 72h});
        if (since_ && dice_.chance(3) && isPlausible(prefs_.longHours))
            now_ = *since_ + longTime() + dice_.of<Duration>({0s, 0s, Duration(0.25), 1s, -1s, 3599s});
    }

    void charge() {
        const auto threshold = dice_.of<std::int64_t>({prefs_.limit, prefs_.low, prefs_.lowPowerAt});
        if (dice_.chance(60) && threshold > least && threshold < most)
            state_.percent = threshold + dice_.of<std::int64_t>({-1, 0, 1});
        else if (dice_.chance(97))
            state_.percent = static_cast<std::int64_t>(dice_.below(101));
        else
            state_.percent = dice_.of<std::int64_t>({-1, 101, least, most});
    }

    void plugOrUnplug() {
        state_.pluggedIn = !state_.pluggedIn;
        since_ = state_.pluggedIn ? std::optional(now_) : std::nullopt;
        const std::vector<std::int64_t> high{80, 81, 95, 100};
        const std::vector<std::int64_t> low{10, 19, 20, 29, 30};
        if (dice_.coin())
            state_.percent = dice_.of(state_.pluggedIn ? high : low);
    }

    void age() {
        state_.designCapacity = dice_.of<std::int64_t>({5000, 5000, 5000, 200, 1000, 3});
        const auto design = static_cast<double>(*state_.designCapacity);
        const auto health = dice_.of<double>({78.5, 79, 79.5, 79.98, 80, 80.02, 81, 81.98, 82, 82.02, 90, 101});
        state_.fullCapacity = static_cast<std::int64_t>(std::round(design * health / 100));
        if (dice_.chance(10))
            state_.fullCapacity = dice_.of<std::optional<std::int64_t>>({std::nullopt, 0, -1, -5001, 1});
        if (dice_.chance(10))
            state_.designCapacity = dice_.of<std::optional<std::int64_t>>({std::nullopt, 0, -1, -5000, 1});
    }

    void changePreferences() {
        const bool flag = dice_.chance(70);
        switch (dice_.below(13)) {
        case 0:
            prefs_.limitEnabled = flag;
            break;
        case 1:
            prefs_.repeatReminder = flag;
            break;
        case 2:
            prefs_.lowEnabled = flag;
            break;
        case 3:
            prefs_.longEnabled = flag;
            break;
        case 4:
            prefs_.healthEnabled = flag;
            break;
        case 5:
            prefs_.lowPowerEnabled = flag;
            break;
        case 6:
            prefs_.quietEnabled = !flag;
            break;
        case 7:
            prefs_.limit = dice_.of<std::int64_t>({80, 80, 50, 100, 0, 150, -5, least, most});
            break;
        case 8:
            prefs_.low = dice_.of<std::int64_t>({20, 20, 5, 50, 0, 150, -5, least, most});
            break;
        case 9:
            prefs_.lowPowerAt = dice_.of<std::int64_t>({30, 30, 20, 10, 0, 150, -5, least, most});
            break;
        case 10:
            prefs_.longHours = dice_.of<std::int64_t>({8, 8, 8, 1, 24, 0, -2, least, most});
            break;
        case 11:
            prefs_.quietStart = dice_.of<std::int64_t>({1320, 540, 0, 1439, 420, -10, 5000});
            break;
        case 12:
            prefs_.quietEnd = dice_.of<std::int64_t>({420, 1020, 0, 1439, 1320, -10, 5000});
            break;
        }
    }

    void moveSince() {
        if (dice_.coin())
            since_ = dice_.of<std::optional<Date>>({std::nullopt, now_, now_ + 90min, now_ - 30 * 24h});
        else if (isPlausible(prefs_.longHours))
            since_ = now_ - longTime() + dice_.of<Duration>({0s, 0s, Duration(-0.25), -1s, 1s, -59min, -1h});
    }

    static bool isPlausible(std::int64_t hours) { return hours > -1000 && hours < 1000; }
    Duration longTime() const { return Duration(static_cast<double>(prefs_.longHours) * 3600); }
};

std::string shown(const std::vector<PendingAlert>& alerts) {
    std::string text;
    for (const PendingAlert& alert : alerts)
        text += "\n    " + std::string(rawValue(alert.kind)) + ": " + alert.title + ": " + alert.body;
    return alerts.empty() ? " nothing" : text;
}

std::string shown(const AlertEngine& engine) {
    std::ostringstream out;
    out << std::fixed << "charge limit " << engine.chargeSent << " times, last at "
        << engine.chargeLast.time_since_epoch().count() << (engine.lowSent ? ", low" : "")
        << (engine.longSent ? ", too long" : "") << (engine.lowPowerSent ? ", low power" : "") << "; silent:";
    for (const AlertKind kind : engine.suppressed)
        out << " " << rawValue(kind);
    return out.str();
}

std::string shown(std::uint64_t seed, const std::vector<Step>& steps) {
    std::ostringstream out;
    out << "seed " << seed << ", after\n";
    for (const Step& step : steps)
        out << "  " << step << "\n";
    return out.str();
}

constexpr std::uint64_t sequences = 3000;
constexpr std::size_t stepsEach = 100;

/// What happened in all sequences together, so that nobody believes a test in which nothing happens.
struct Happened {
    std::map<AlertKind, int> given;
    int severalAtOnce = 0;
    int fourthChargeLimits = 0;
    int silenced = 0;
    int marksTakenBack = 0;
};

/// Goes on to the first difference; false when there is one.
bool agree(std::uint64_t seed, Happened& happened) {
    FakeClock clock;
    FakeMainLoop loop(clock);
    FakeUserDefaults defaults(loop);
    AlertEngine engine;
    NaiveAlertEngine naive;
    World world(seed);
    std::vector<Step> steps;
    while (steps.size() < stepsEach) {
        const Step& step = steps.emplace_back(world.next());
        if (step.mark) {
            defaults.setObject("healthAlertSent", *step.mark);
            naive.healthAlertSent = step.mark->boolean() == true;
        }
        const bool markBefore = naive.healthAlertSent;
        const auto expected = naive.run(step.state, step.since, step.now, step.prefs, step.canDeliver, step.prime);
        const auto actual =
            engine.run(step.state, step.since, step.now, step.prefs, step.canDeliver, step.prime, defaults);
        if (actual != expected) {
            ADD_FAILURE() << "given:" << shown(actual) << "\nexpected:" << shown(expected) << "\n"
                          << shown(seed, steps);
            return false;
        }
        const AlertEngine memory = naive.memory();
        if (engine != memory) {
            ADD_FAILURE() << "remembered: " << shown(engine) << "\nexpected: " << shown(memory) << "\n"
                          << shown(seed, steps);
            return false;
        }
        if (defaults.boolForKey("healthAlertSent") != naive.healthAlertSent) {
            ADD_FAILURE() << "health mark, expected: " << naive.healthAlertSent << "\n" << shown(seed, steps);
            return false;
        }
        for (const PendingAlert& alert : actual)
            ++happened.given[alert.kind];
        happened.severalAtOnce += actual.size() > 1;
        happened.fourthChargeLimits += engine.chargeSent == 4 && engine.chargeLast == step.now && !actual.empty();
        happened.silenced += !engine.suppressed.empty();
        happened.marksTakenBack += markBefore && !naive.healthAlertSent;
    }
    return true;
}

TEST(AlertEngineModel, AgreesWithTheRulesToldPlainlyWhateverHappens) {
    Happened happened;
    for (std::uint64_t seed = 1; seed <= sequences; ++seed) {
        if (!agree(seed, happened))
            return; // one difference shows enough
    }
    for (const AlertKind kind : allAlertKinds)
        EXPECT_GT(happened.given[kind], 100) << rawValue(kind);
    EXPECT_GT(happened.severalAtOnce, 100);
    EXPECT_GT(happened.fourthChargeLimits, 100);
    EXPECT_GT(happened.silenced, 100);
    EXPECT_GT(happened.marksTakenBack, 100);
}

} // namespace
