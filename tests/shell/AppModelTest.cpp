// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppModel.h"

#include "alerts/Prefs.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using Reason = AppModel::Reason;

namespace {

struct AppModelTest : ::testing::Test {
    FakePlatform fake;
    std::unique_ptr<AppModel> model;

    AppModel& made() {
        model = std::make_unique<AppModel>(fake.platform());
        return *model;
    }
    AppModel& started() {
        made().start();
        return *model;
    }
    /// How many readings `action` causes.
    template <class Action>
    int readingsDuring(Action action) {
        const int before = fake.powerSources.snapshots;
        action();
        return fake.powerSources.snapshots - before;
    }
};

TEST_F(AppModelTest, IsMadeWithoutReadingOrObservingAnything) {
    const AppModel& fresh = made();
    fake.mainLoop.advance(10min);
    EXPECT_TRUE(fake.journal.empty());
    EXPECT_EQ(fresh.state.get(), BatteryState());
    EXPECT_EQ(fresh.pluggedSince.get(), std::nullopt);
    EXPECT_EQ(fresh.historyVersion.get(), 0);
    EXPECT_EQ(fresh.snoozeUntil.get(), std::nullopt);
}

TEST_F(AppModelTest, ShowsTheStoredSnoozeAsItStoodWhenTheModelWasMade) {
    const Date end = fake.clock.now() + 30min;
    Prefs::setSnoozeUntil(fake.defaults, end);
    AppModel& running = made();
    EXPECT_EQ(running.snoozeUntil.get(), end);
    Prefs::setSnoozeUntil(fake.defaults, std::nullopt);
    fake.mainLoop.advance(1h);
    running.start();
    EXPECT_EQ(running.snoozeUntil.get(), end);
}

TEST_F(AppModelTest, ReadsFirstAndObservesThen) {
    started();
    EXPECT_EQ(fake.journal, (FakeJournal{"read", "power sources", "timer", "power state", "will sleep", "did wake"}));
}

TEST_F(AppModelTest, PublishesTheFirstReadingBeforeStartReturns) {
    fake.powerSources.setBattery(64, false);
    fake.powerSaving.lowPowerMode = true;
    started();
    EXPECT_EQ(model->state.get().percent, 64);
    EXPECT_TRUE(model->state.get().lowPowerMode);
}

TEST_F(AppModelTest, RefreshesAtEachChangeOfThePowerSources) {
    fake.powerSources.setBattery(64, false);
    started();
    fake.powerSources.setBattery(63, false);
    EXPECT_EQ(readingsDuring([&] { fake.powerSources.change(); }), 1);
    EXPECT_EQ(model->state.get().percent, 63);
}

TEST_F(AppModelTest, RefreshesEveryMinuteForEver) {
    started();
    ASSERT_EQ(fake.mainLoop.repetitions.size(), 1U);
    EXPECT_EQ(fake.mainLoop.repetitions[0]->interval, Duration(60));
    EXPECT_EQ(fake.mainLoop.repetitions[0]->tolerance, Duration(10));
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(59s); }), 0);
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(1s); }), 1);
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(24h); }), 24 * 60);
}

TEST_F(AppModelTest, RefreshesWhenTheLowPowerModeIsSwitched) {
    started();
    EXPECT_EQ(readingsDuring([&] { fake.powerSaving.switchLowPowerMode(true); }), 1);
    EXPECT_TRUE(model->state.get().lowPowerMode);
    EXPECT_EQ(readingsDuring([&] { fake.powerSaving.switchLowPowerMode(false); }), 1);
    EXPECT_FALSE(model->state.get().lowPowerMode);
}

TEST_F(AppModelTest, RefreshesOnceThreeSecondsAfterWaking) {
    started();
    fake.clock.suspend(8h);
    EXPECT_EQ(readingsDuring([&] {
                  fake.sessionEvents.wake();
                  fake.mainLoop.advance(2999ms);
              }),
              0);
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(1ms); }), 1);
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(56s); }), 0);
}

TEST_F(AppModelTest, TwoWakesGiveTwoRefreshes) {
    started();
    fake.sessionEvents.wake();
    fake.mainLoop.advance(1s);
    fake.sessionEvents.wake();
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(1999ms); }), 0);
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(1ms); }), 1);
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(999ms); }), 0);
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(1ms); }), 1);
}

TEST_F(AppModelTest, DoesNotRefreshWhenPreferencesChange) {
    started();
    EXPECT_EQ(readingsDuring([&] {
                  fake.defaults.setObject("limit", 60);
                  fake.defaults.setObject("showTime", true);
                  fake.mainLoop.advance(59s);
              }),
              0);
}

TEST_F(AppModelTest, RunsOnItsTimerWhereTheSystemReportsNoChanges) {
    fake.powerSources.reportsChanges = false;
    started();
    EXPECT_EQ(fake.powerSources.notifyCalls, 1);
    EXPECT_EQ(readingsDuring([&] { fake.mainLoop.advance(1min); }), 1);
    EXPECT_EQ(fake.powerSources.notifyCalls, 1);
    EXPECT_EQ(readingsDuring([&] { fake.powerSaving.switchLowPowerMode(true); }), 1);
}

TEST_F(AppModelTest, IsPluggedInSinceTheFirstReadingThatSaysSo) {
    for (const Reason reason : {Reason::launch, Reason::event, Reason::timer, Reason::wake}) {
        AppModel& fresh = made();
        fake.powerSources.setBattery(64, false);
        fresh.refresh(reason);
        EXPECT_EQ(fresh.pluggedSince.get(), std::nullopt);
        fake.mainLoop.advance(1min);
        fake.powerSources.setBattery(64, true);
        fresh.refresh(reason);
        EXPECT_EQ(fresh.pluggedSince.get(), fake.clock.now()) << static_cast<int>(reason);
    }
}

TEST_F(AppModelTest, StaysPluggedInSinceTheBeginningOfTheRun) {
    fake.powerSources.setBattery(64, true);
    const Date start = fake.clock.now();
    AppModel& running = started();
    int announcements = -1; // the current value is announced first
    const Subscription subscription = running.pluggedSince.subscribe([&](const auto&) { ++announcements; });
    for (const Reason reason : {Reason::event, Reason::timer, Reason::wake, Reason::launch}) {
        fake.mainLoop.advance(17min);
        running.refresh(reason);
        EXPECT_EQ(running.pluggedSince.get(), start) << static_cast<int>(reason);
    }
    EXPECT_EQ(announcements, 0);
}

TEST_F(AppModelTest, ForgetsTheRunWhenUnpluggedAndStartsAnewOne) {
    fake.powerSources.setBattery(64, true);
    AppModel& running = started();
    fake.mainLoop.advance(30s);
    fake.powerSources.setBattery(64, false);
    fake.powerSources.change();
    EXPECT_EQ(running.pluggedSince.get(), std::nullopt);
    fake.mainLoop.advance(10s);
    fake.powerSources.setBattery(64, true);
    fake.powerSources.change();
    EXPECT_EQ(running.pluggedSince.get(), fake.clock.now());
}

TEST_F(AppModelTest, AnnouncesNothingWhileItStaysUnplugged) {
    fake.powerSources.setBattery(64, false);
    AppModel& running = started();
    int announcements = -1;
    const Subscription subscription = running.pluggedSince.subscribe([&](const auto&) { ++announcements; });
    fake.powerSources.setBattery(63, false);
    fake.powerSources.change();
    fake.mainLoop.advance(5min);
    EXPECT_EQ(announcements, 0);
}

TEST_F(AppModelTest, IsNotPluggedInWithoutABattery) {
    Dictionary desktop = internalBattery(0, true);
    desktop.insert_or_assign("Is Present", false);
    fake.powerSources.sources = std::vector<std::optional<Value>>{Value(desktop)};
    EXPECT_EQ(started().pluggedSince.get(), std::nullopt);
}

TEST_F(AppModelTest, ForgetsTheRunWhenTheBatteryIsTakenOut) {
    fake.powerSources.setBattery(64, true);
    AppModel& running = started();
    fake.powerSources.sources.reset();
    fake.powerSources.change();
    EXPECT_EQ(running.pluggedSince.get(), std::nullopt);
    EXPECT_EQ(running.state.get(), BatteryState());
}

TEST_F(AppModelTest, TakesTheTimeAfterTheReading) {
    fake.powerSources.setBattery(64, true);
    fake.powerSources.whileReading = [&] { fake.clock.pass(5s); };
    const Date before = fake.clock.now();
    EXPECT_EQ(started().pluggedSince.get(), before + 5s);
}

TEST_F(AppModelTest, SettlesSinceWhenItIsPluggedInBeforeItPublishesTheState) {
    fake.powerSources.setBattery(64, false);
    AppModel& running = started();
    std::vector<std::string> order;
    const Subscription since = running.pluggedSince.subscribe([&](const std::optional<Date>&) {
        order.push_back("since, with the state at " + std::to_string(running.state.get().percent));
    });
    const Subscription state = running.state.subscribe([&](const BatteryState&) {
        order.emplace_back(running.pluggedSince.get() ? "state, plugged in" : "state, unplugged");
    });
    order.clear();
    fake.powerSources.setBattery(65, true);
    fake.powerSources.change();
    fake.powerSources.setBattery(66, false);
    fake.powerSources.change();
    EXPECT_EQ(order, (std::vector<std::string>{"since, with the state at 64", "state, plugged in",
                                               "since, with the state at 65", "state, unplugged"}));
}

TEST_F(AppModelTest, AnnouncesNoStateThatEqualsTheOneBefore) {
    fake.powerSources.setBattery(64, true);
    AppModel& running = started();
    int announcements = -1;
    const Subscription subscription = running.state.subscribe([&](const BatteryState&) { ++announcements; });
    fake.mainLoop.advance(10min);
    fake.powerSources.change();
    EXPECT_EQ(announcements, 0);
    fake.powerSaving.switchLowPowerMode(true);
    EXPECT_EQ(announcements, 1);
}

TEST_F(AppModelTest, SnoozesForAnHourFromNow) {
    AppModel& running = started();
    running.snooze();
    const Date end = fake.clock.now() + 1h;
    EXPECT_EQ(running.snoozeUntil.get(), end);
    EXPECT_EQ(Prefs::snoozeUntil(fake.defaults, fake.clock), end);
    fake.mainLoop.advance(20min);
    running.snooze();
    EXPECT_EQ(running.snoozeUntil.get(), end + 20min);
}

TEST_F(AppModelTest, SnoozingDoesNotRefresh) {
    started();
    EXPECT_EQ(readingsDuring([&] {
                  model->snooze();
                  fake.mainLoop.advance(59s);
              }),
              0);
}

TEST_F(AppModelTest, EveryTriggerIsSilentOnceTheModelIsGone) {
    started();
    fake.sessionEvents.wake(); // schedules a refresh
    model.reset();
    EXPECT_EQ(readingsDuring([&] {
                  fake.powerSources.change();
                  fake.powerSaving.switchLowPowerMode(true);
                  fake.sessionEvents.prepareForSleep();
                  fake.sessionEvents.wake();
                  fake.mainLoop.advance(10min);
                  // And callbacks that were already being called when the model was destroyed.
                  fake.powerSources.callbacks.at(0)();
                  fake.powerSaving.callbacks.at(0)();
                  fake.sessionEvents.willSleepCallbacks.at(0)();
                  fake.sessionEvents.didWakeCallbacks.at(0)();
                  fake.mainLoop.repetitions.at(0)->task();
                  fake.mainLoop.advance(10min);
              }),
              0);
    EXPECT_FALSE(fake.mainLoop.repetitions[0]->isAlive);
    EXPECT_EQ(fake.mainLoop.waiting(), 0U);
}

using AppModelDeathTest = AppModelTest;

/// Runs `trigger` off the main thread and expects it to stop the program before it reads anything.
#define EXPECT_STOPS_OFF_THE_MAIN_THREAD(trigger)                                                                      \
    do {                                                                                                               \
        fake.mainLoop.mainThread = false;                                                                              \
        fake.powerSources.whileReading = [] { std::_Exit(3); };                                                        \
        EXPECT_EXIT(trigger, ::testing::KilledBySignal(SIGABRT), "");                                                  \
        fake.mainLoop.mainThread = true;                                                                               \
    } while (false)

TEST_F(AppModelDeathTest, EveryTriggerOffTheMainThreadStopsTheProgram) {
    started();
    fake.sessionEvents.wake();
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.powerSources.change());
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.mainLoop.repetitions.at(0)->task());
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.powerSaving.switchLowPowerMode(true));
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.sessionEvents.prepareForSleep());
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.mainLoop.advance(3s));
}

TEST_F(AppModelDeathTest, EveryTriggerOffTheMainThreadStopsTheProgramAlsoWhenTheModelIsGone) {
    started();
    fake.sessionEvents.wake();
    model.reset();
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.powerSources.callbacks.at(0)());
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.mainLoop.repetitions.at(0)->task());
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.powerSaving.callbacks.at(0)());
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.sessionEvents.willSleepCallbacks.at(0)());
    EXPECT_STOPS_OFF_THE_MAIN_THREAD(fake.mainLoop.advance(3s));
}

} // namespace
