// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/AlertEngine.h"

#include "alerts/Prefs.h"
#include "battery/BatteryState.h"
#include "support/Dice.h"
#include "support/FakeClock.h"
#include "support/FakeMainLoop.h"
#include "support/FakeUserDefaults.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using Kinds = std::vector<AlertKind>;

namespace {

enum class Power { battery, plug };

struct AlertEngineTest : ::testing::Test {
    FakeClock clock;
    FakeMainLoop mainLoop{clock};
    FakeUserDefaults defaults{mainLoop};
    Prefs prefs = Prefs::current(defaults);
    AlertEngine engine;
    BatteryState state;
    std::optional<Date> since;
    Date now = clock.now();

    void battery(std::int64_t percent, Power power) {
        state.hasBattery = true;
        state.percent = percent;
        state.pluggedIn = power == Power::plug;
    }
    void health(std::int64_t full) {
        state.designCapacity = 1000;
        state.fullCapacity = full;
    }
    std::vector<PendingAlert> run(bool canDeliver = true) {
        return engine.run(state, since, now, prefs, canDeliver, false, defaults);
    }
    std::vector<PendingAlert> prime() { return engine.run(state, since, now, prefs, false, true, defaults); }

    static Kinds kinds(const std::vector<PendingAlert>& alerts) {
        Kinds kinds;
        for (const PendingAlert& alert : alerts)
            kinds.push_back(alert.kind);
        return kinds;
    }
    bool healthWasTold() const { return defaults.boolForKey("healthAlertSent"); }
};

TEST_F(AlertEngineTest, AFreshOneHasGivenNothing) {
    EXPECT_TRUE(engine.suppressed.empty());
    EXPECT_EQ(engine.chargeSent, 0);
    EXPECT_LT(engine.chargeLast, Date(Duration(-1e15))) << "before every instant that a clock tells";
    EXPECT_FALSE(engine.lowSent);
    EXPECT_FALSE(engine.longSent);
    EXPECT_FALSE(engine.lowPowerSent);
}

TEST_F(AlertEngineTest, TellsTheChargeLimitFromTheLimitOn) {
    battery(79, Power::plug);
    EXPECT_TRUE(run().empty());
    battery(80, Power::plug);
    EXPECT_EQ(run(), (std::vector{PendingAlert{AlertKind::chargeLimit, "Charge limit reached",
                                               "Battery is at 80%. Unplug to keep it healthy."}}));
}

TEST_F(AlertEngineTest, TellsTheChargeLimitOnlyWhilePluggedIn) {
    battery(100, Power::battery);
    EXPECT_TRUE(run().empty());
    battery(100, Power::plug);
    prefs.limitEnabled = false;
    EXPECT_TRUE(run().empty());
}

TEST_F(AlertEngineTest, RepeatsTheChargeLimitThreeTimes) {
    battery(90, Power::plug);
    int given = 0;
    for (int i = 0; i < 120; ++i, now += 60s)
        given += static_cast<int>(run().size());
    EXPECT_EQ(given, 4);
    EXPECT_EQ(engine.chargeSent, 4);
}

TEST_F(AlertEngineTest, RepeatsTheChargeLimitWithTenSecondsOfSlack) {
    battery(90, Power::plug);
    EXPECT_EQ(run().size(), 1U);
    now += 289.999s;
    EXPECT_TRUE(run().empty());
    now += 0.001s;
    EXPECT_EQ(run().size(), 1U);
    EXPECT_EQ(engine.chargeLast, now);
}

TEST_F(AlertEngineTest, TellsTheChargeLimitOnceWithoutRepeats) {
    prefs.repeatReminder = false;
    battery(90, Power::plug);
    EXPECT_EQ(run().size(), 1U);
    now += 1h;
    EXPECT_TRUE(run().empty());
    prefs.repeatReminder = true;
    EXPECT_EQ(run().size(), 1U) << "switched on in between";
}

TEST_F(AlertEngineTest, DoesNotRepeatWhileTheClockIsBehind) {
    battery(90, Power::plug);
    run();
    now -= 1h;
    EXPECT_TRUE(run().empty());
}

TEST_F(AlertEngineTest, StartsANewSeriesAfterOneRunUnplugged) {
    battery(90, Power::plug);
    for (int i = 0; i < 10; ++i, now += 300s)
        run();
    EXPECT_EQ(engine.chargeSent, 4);
    battery(90, Power::battery);
    run();
    EXPECT_EQ(engine.chargeSent, 0);
    battery(90, Power::plug);
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::chargeLimit});
    battery(90, Power::battery);
    run();
    battery(90, Power::plug);
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::chargeLimit}) << "however soon after the one before";
}

TEST_F(AlertEngineTest, TellsLowBatteryUpToTheThreshold) {
    prefs.lowPowerEnabled = false;
    battery(21, Power::battery);
    EXPECT_TRUE(run().empty());
    battery(20, Power::battery);
    prefs.lowEnabled = false;
    EXPECT_TRUE(run().empty());
    prefs.lowEnabled = true;
    EXPECT_EQ(run(), (std::vector{PendingAlert{AlertKind::low, "Low battery", "Battery is at 20%. Plug in soon."}}));
}

TEST_F(AlertEngineTest, TellsLowBatteryOncePerEpisode) {
    prefs.lowPowerEnabled = false;
    battery(20, Power::battery);
    run();
    now += 24h;
    battery(5, Power::battery);
    EXPECT_TRUE(run().empty());
    battery(5, Power::plug);
    EXPECT_TRUE(run().empty());
    battery(5, Power::battery);
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::low});
}

TEST_F(AlertEngineTest, SuggestsLowPowerModeBelowItsThreshold) {
    battery(30, Power::battery);
    EXPECT_TRUE(run().empty());
    battery(29, Power::battery);
    EXPECT_EQ(run(), (std::vector{PendingAlert{
                         AlertKind::lowPower, "Try Low Power Mode",
                         "Battery is at 29%. Turn on Low Power Mode (System Settings, Battery) to stretch it."}}));
    now += 1h;
    EXPECT_TRUE(run().empty());
}

TEST_F(AlertEngineTest, DoesNotSuggestLowPowerModeWhileItIsOn) {
    battery(25, Power::battery);
    state.lowPowerMode = true;
    EXPECT_TRUE(run().empty());
    state.lowPowerMode = false;
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::lowPower});
}

TEST_F(AlertEngineTest, TellsLowFirstAndThenSuggestsLowPowerMode) {
    battery(15, Power::battery);
    EXPECT_EQ(kinds(run()), (Kinds{AlertKind::low, AlertKind::lowPower}));
}

TEST_F(AlertEngineTest, TellsTooLongWhenMoreThanThoseHoursHavePassed) {
    prefs.limitEnabled = false;
    battery(85, Power::plug);
    since = now - 8h;
    EXPECT_TRUE(run().empty());
    since = now - 8h - 1ms;
    EXPECT_EQ(run(), (std::vector{PendingAlert{AlertKind::tooLong, "Plugged in for a long time",
                                               "Plugged in for over 8 h at 85%. Unplug it to let the battery rest."}}));
    now += 10h;
    EXPECT_TRUE(run().empty());
    since.reset();
    run();
    since = now - 9h;
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::tooLong}) << "plugged in anew";
}

TEST_F(AlertEngineTest, CutsUnfinishedHoursOff) {
    prefs.limitEnabled = false;
    battery(85, Power::plug);
    since = now - 8h - 59min;
    EXPECT_EQ(run().at(0).body.substr(0, 25), "Plugged in for over 8 h a");
}

TEST_F(AlertEngineTest, TellsTooLongOnlyAtOrAboveTheLimitAndWithAKnownStart) {
    prefs.limitEnabled = false;
    since = now - 20h;
    battery(79, Power::plug);
    EXPECT_TRUE(run().empty());
    battery(80, Power::battery);
    EXPECT_TRUE(run().empty());
    battery(80, Power::plug);
    since.reset();
    EXPECT_TRUE(run().empty());
    since = now - 20h;
    prefs.longEnabled = false;
    EXPECT_TRUE(run().empty());
    prefs.longEnabled = true;
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::tooLong});
}

TEST_F(AlertEngineTest, GivesTheChargeLimitBeforeTooLongBeforeHealth) {
    battery(85, Power::plug);
    since = now - 9h;
    health(700);
    EXPECT_EQ(kinds(run()), (Kinds{AlertKind::chargeLimit, AlertKind::tooLong, AlertKind::health}));
}

TEST_F(AlertEngineTest, KeepsSilentAboutWhatWasTrueWhenItWasPrimed) {
    battery(85, Power::plug);
    since = now - 9h;
    EXPECT_TRUE(prime().empty());
    EXPECT_EQ(engine.suppressed, (std::set{AlertKind::chargeLimit, AlertKind::tooLong}));
    now += 1h;
    EXPECT_TRUE(run().empty());
    battery(79, Power::plug);
    run();
    EXPECT_TRUE(engine.suppressed.empty());
    battery(80, Power::plug);
    EXPECT_EQ(kinds(run()), (Kinds{AlertKind::chargeLimit, AlertKind::tooLong}));
}

TEST_F(AlertEngineTest, GivesNothingWhileItIsPrimedEvenIfItCouldBeDelivered) {
    battery(85, Power::plug);
    health(700);
    EXPECT_TRUE(engine.run(state, since, now, prefs, true, true, defaults).empty());
}

TEST_F(AlertEngineTest, PrimingEndsEpisodesToo) {
    battery(15, Power::battery);
    run();
    battery(15, Power::plug);
    prime();
    battery(15, Power::battery);
    EXPECT_EQ(kinds(run()), (Kinds{AlertKind::low, AlertKind::lowPower}));
}

TEST_F(AlertEngineTest, TellsLaterWhatCouldNotBeDelivered) {
    prefs.lowPowerEnabled = false;
    battery(15, Power::battery);
    for (int i = 0; i < 60; ++i, now += 60s)
        EXPECT_TRUE(run(false).empty());
    EXPECT_FALSE(engine.lowSent);
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::low});
}

TEST_F(AlertEngineTest, DoesNotTellWhatEndedBeforeItCouldBeDelivered) {
    battery(15, Power::battery);
    run(false);
    battery(15, Power::plug);
    EXPECT_TRUE(run().empty());
}

TEST_F(AlertEngineTest, ForgetsItsEpisodesWithoutABattery) {
    battery(90, Power::plug);
    run();
    battery(15, Power::battery);
    run();
    battery(90, Power::plug);
    since = now - 9h;
    run();
    prime();
    const Date last = engine.chargeLast;
    state = BatteryState();
    health(500);
    EXPECT_TRUE(run().empty());
    AlertEngine fresh;
    fresh.chargeLast = last;
    EXPECT_EQ(engine, fresh);
    EXPECT_FALSE(healthWasTold());
}

TEST_F(AlertEngineTest, TellsOnceThatTheHealthHasFallenBelowEighty) {
    battery(50, Power::battery);
    health(800);
    EXPECT_TRUE(run().empty());
    health(796);
    EXPECT_EQ(run(), (std::vector{PendingAlert{AlertKind::health, "Battery health is low",
                                               "Battery health has fallen to 80% of its original capacity."}}));
    EXPECT_TRUE(healthWasTold());
    health(600);
    EXPECT_TRUE(run().empty());
    AlertEngine afterARestart;
    EXPECT_TRUE(afterARestart.run(state, since, now, prefs, true, false, defaults).empty());
}

TEST_F(AlertEngineTest, RoundsHalvesOfTheHealthUp) {
    battery(50, Power::battery);
    health(785);
    EXPECT_EQ(run().at(0).body, "Battery health has fallen to 79% of its original capacity.");
}

TEST_F(AlertEngineTest, WaitsForTheHealthToRecoverByTwoPoints) {
    battery(50, Power::battery);
    health(790);
    run();
    for (const std::int64_t full : {810, 819, 790}) {
        health(full);
        EXPECT_TRUE(run().empty());
        EXPECT_TRUE(healthWasTold()) << full;
    }
    health(820);
    EXPECT_TRUE(run().empty());
    EXPECT_FALSE(healthWasTold());
    health(810);
    EXPECT_TRUE(run().empty());
    health(799);
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::health});
}

TEST_F(AlertEngineTest, StoresNothingOfAHealthThatWasNeverLow) {
    battery(50, Power::battery);
    health(900);
    run();
    prime();
    EXPECT_TRUE(defaults.stored().empty());
}

TEST_F(AlertEngineTest, NeverTellsAHealthThatWasLowWhenItWasPrimed) {
    battery(50, Power::battery);
    health(700);
    prefs.healthEnabled = false;
    EXPECT_TRUE(prime().empty());
    EXPECT_TRUE(healthWasTold());
    prefs.healthEnabled = true;
    EXPECT_TRUE(run().empty());
}

TEST_F(AlertEngineTest, TellsTheHealthLaterWhenItCouldNotBeDeliveredOrWasSwitchedOff) {
    battery(50, Power::battery);
    health(700);
    EXPECT_TRUE(run(false).empty());
    prefs.healthEnabled = false;
    EXPECT_TRUE(run().empty());
    EXPECT_FALSE(healthWasTold());
    prefs.healthEnabled = true;
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::health});
}

TEST_F(AlertEngineTest, KnowsNoHealthWithoutBothCapacities) {
    battery(50, Power::battery);
    state.fullCapacity = 10;
    EXPECT_TRUE(run().empty());
    state.designCapacity = 0;
    EXPECT_TRUE(run().empty());
    state.designCapacity = -100;
    EXPECT_TRUE(run().empty());
    state.designCapacity = 100;
    state.fullCapacity.reset();
    EXPECT_TRUE(run().empty());
    EXPECT_FALSE(healthWasTold());
}

TEST_F(AlertEngineTest, TakesPreferencesAsTheyAre) {
    prefs.limit = 0;
    battery(0, Power::plug);
    EXPECT_EQ(kinds(run()), Kinds{AlertKind::chargeLimit});
    prefs.limit = 150;
    battery(100, Power::plug);
    EXPECT_TRUE(run().empty());
    prefs.limitEnabled = false;
    prefs.limit = -5;
    prefs.longHours = -1;
    since = now;
    EXPECT_EQ(run().at(0).body, "Plugged in for over 0 h at 100%. Unplug it to let the battery rest.");
}

/// What held in one run of the engine, and what was given.
struct PastRun {
    Date now;
    bool prime = false;
    std::set<AlertKind> holds;
    std::set<AlertKind> given;
};

/// Whether a reminder that may be given is due, found by looking back over the runs so far, the present one last.
bool isDue(AlertKind kind, const std::vector<PastRun>& runs, bool repeats) {
    int times = 0;
    std::optional<Date> last;
    for (auto run = runs.rbegin(); run != runs.rend() && run->holds.contains(kind); ++run) {
        if (run->prime)
            return false;
        times += run->given.contains(kind);
        if (run->given.contains(kind) && !last)
            last = run->now;
    }
    const bool mayRepeat = kind == AlertKind::chargeLimit && repeats && times < 4;
    return times == 0 || (mayRepeat && runs.back().now - *last >= 290s);
}

TEST_F(AlertEngineTest, TellsEachEpisodeAsOftenAsItShouldWhateverHappens) {
    std::map<AlertKind, int> given;
    for (std::uint64_t seed = 1; seed <= 1000; ++seed) {
        Dice dice(seed);
        engine = {};
        std::vector<PastRun> runs;
        for (int step = 0; step < 100; ++step) {
            now += dice.of<Duration>({0s, 60s, 60s, 60s, 289s, 290s, 1h, -1h});
            state.hasBattery = !dice.chance(3);
            if (dice.chance(15))
                state.pluggedIn = !state.pluggedIn;
            if (dice.chance(40))
                state.percent = dice.of<std::int64_t>({79, 80, 81, 20, 21, 29, 30});
            if (dice.chance(10))
                state.lowPowerMode = !state.lowPowerMode;
            if (dice.chance(10))
                prefs.repeatReminder = dice.coin();
            since = dice.chance(70) ? std::optional(now - 9h) : std::nullopt;
            PastRun& next = runs.emplace_back(PastRun{.now = now, .prime = dice.chance(3), .holds = {}, .given = {}});
            if (state.hasBattery && state.pluggedIn && state.percent >= 80)
                next.holds =
                    since ? std::set{AlertKind::chargeLimit, AlertKind::tooLong} : std::set{AlertKind::chargeLimit};
            if (state.hasBattery && !state.pluggedIn && state.percent <= 20)
                next.holds.insert(AlertKind::low);
            if (state.hasBattery && !state.pluggedIn && state.percent < 30 && !state.lowPowerMode)
                next.holds.insert(AlertKind::lowPower);
            const bool canDeliver = dice.chance(80);
            Kinds due;
            for (const AlertKind kind :
                 {AlertKind::chargeLimit, AlertKind::low, AlertKind::lowPower, AlertKind::tooLong})
                if (canDeliver && next.holds.contains(kind) && isDue(kind, runs, prefs.repeatReminder))
                    due.push_back(kind);
            ASSERT_EQ(kinds(next.prime ? prime() : run(canDeliver)), due) << "seed " << seed << ", step " << step;
            next.given.insert(due.begin(), due.end());
            for (const AlertKind kind : due)
                ++given[kind];
        }
    }
    for (const AlertKind kind : {AlertKind::chargeLimit, AlertKind::low, AlertKind::lowPower, AlertKind::tooLong})
        EXPECT_GT(given[kind], 1000) << rawValue(kind);
}

} // namespace
