// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppModel.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

using Told = std::vector<std::string>;

const Date midnight{Duration(1'698'624'000)}; // in UTC

/// A laptop whose firmware has a charge limit, its user and the program. Plugged in the battery gains 1 % a minute, on
/// battery it loses 1 % every five minutes, asleep 1 % an hour. The charge changes on the half minute.
struct LimitDays : ::testing::Test {
    FakePlatform fake;
    std::optional<AppModel> model;
    int percent = 50;
    bool pluggedIn = false;
    std::optional<int> start = 75; ///< charging begins below this
    std::optional<int> limit = 80; ///< as the file says it; empty without the file
    bool keepsLimit = true;
    Told told; ///< the reminders about the firmware's limit

    LimitDays() {
        fake.clock.setNow(midnight);
        fake.defaults.setObject("limitEnabled", false); // the firmware is to do it
        fake.defaults.setObject("longEnabled", false);
    }

    void launch() {
        model.emplace(fake.platform());
        did([&] { model->start(); });
    }
    void quit() { model.reset(); }

    void until(const std::string& time) {
        const Date end = at(time);
        while (fake.clock.now() < end) {
            did([&] { fake.mainLoop.advance(30s); });
            if (++halfMinutes_ % 2 == 1)
                passMinute();
        }
    }
    void plug() {
        report([&] { pluggedIn = true; });
    }
    void unplug() {
        report([&] { pluggedIn = false; });
    }
    void setLimit(std::optional<int> percentage) {
        limit = percentage; // no driver sends an event for that
        show();
    }

    /// Sleeps; `asleep` is what happens to the machine meanwhile.
    void sleepUntil(
        const std::string& time, const std::function<void()>& asleep = [] {}) {
        did([&] { fake.sessionEvents.prepareForSleep(); });
        const Duration length = at(time) - fake.clock.now();
        fake.clock.suspend(length);
        if (pluggedIn)
            percent = std::min(top(), std::max(percent, percent + static_cast<int>(length / 1min)));
        else
            percent -= static_cast<int>(length / 1h);
        asleep();
        show();
        did([&] { fake.sessionEvents.wake(); });
        did([&] { fake.powerSources.change(); }); // as many drivers do
    }

    std::vector<std::string> withdrawn() {
        std::erase_if(fake.notificationCenter.removed, [](const auto& name) { return !name.starts_with("limit"); });
        return std::exchange(fake.notificationCenter.removed, {});
    }

private:
    int halfMinutes_ = 0;
    int onBattery_ = 0;
    bool charges_ = false;
    int days_ = 0;
    std::size_t seen_ = 0;

    /// The next time that the clock shows this.
    Date at(const std::string& time) const {
        const Duration ofDay = std::stoi(time.substr(0, 2)) * 1h + std::stoi(time.substr(3, 2)) * 1min;
        Date date = midnight + ofDay;
        while (date <= fake.clock.now())
            date += 24h;
        return date;
    }

    int top() const { return keepsLimit && limit && *limit > 0 ? *limit : 100; }

    void passMinute() {
        const int before = percent;
        const bool charged = charges_;
        if (pluggedIn && (charges_ || percent < start.value_or(top())))
            percent = std::min(std::max(top(), percent), percent + 1);
        else if (!pluggedIn && ++onBattery_ % 5 == 0)
            --percent;
        show();
        if (percent != before || charges_ != charged)
            did([&] { fake.powerSources.change(); });
    }

    void report(const std::function<void()>& change) {
        change();
        charges_ = false;
        show();
        did([&] { fake.powerSources.change(); });
    }

    void show() {
        if (!pluggedIn || percent >= top())
            charges_ = false;
        else if (percent < start.value_or(top()))
            charges_ = true;
        fake.powerSources.setBattery(percent, pluggedIn, charges_);
        fake.powerSources.packLimits = {{.device = "BAT0",
                                         .model = "5B10V98091",
                                         .design = 80400,
                                         .percent = percent,
                                         .isCharging = charges_,
                                         .tellsLimit = limit.has_value(),
                                         .limit = limit > 0 ? std::optional<std::int64_t>(*limit) : std::nullopt}};
    }

    void did(const std::function<void()>& action) {
        action();
        for (; seen_ < fake.notificationCenter.requests.size(); ++seen_) {
            const auto& request = fake.notificationCenter.requests[seen_];
            if (!request.identifier.starts_with("limit"))
                continue;
            const auto seconds = static_cast<int>((fake.clock.now() - midnight).count());
            char when[32];
            std::snprintf(when, sizeof when, "%d %02d:%02d ", seconds / 86400 + 1, seconds / 3600 % 24,
                          seconds / 60 % 60);
            told.push_back(when + request.identifier + ": " + request.body);
        }
    }
};

TEST_F(LimitDays, AThinkPadThatKeepsItsLimitIsNeverSpokenOf) {
    launch();
    until("08:00");
    for (int day = 0; day < 7; ++day) {
        plug();
        until("12:00");
        EXPECT_EQ(percent, 80);
        unplug();
        until("13:30");
        plug();
        until("18:00");
        if (day == 3) { // to take it along, the user has it charged fully for once, and sets the limit back
            setLimit(100);
            start.reset();
            until("19:00");
            EXPECT_EQ(percent, 100);
            setLimit(80);
            start = 75;
        }
        until("20:00");
        unplug();
        until("22:00");
        sleepUntil("08:00");
        if (day == 5) {
            quit();
            launch();
        }
    }
    EXPECT_EQ(told, Told{});
    EXPECT_EQ(fake.files.files["/home/user/.local/state/Velmora/charge-limits"], "80 80400 5B10V98091\n");
}

TEST_F(LimitDays, AMachineThatIgnoresItsLimitIsSpokenOfOnceUntilItWasWithinAgain) {
    keepsLimit = false;
    start.reset();
    launch();
    until("08:00");
    percent = 60;
    plug();
    until("17:00");
    EXPECT_EQ(percent, 100);
    // 60 % at 8:00:00, then one more at 8:00:30 and so on: 83 % at 8:22:30, and ten minutes later 93 %.
    const std::string first =
        "1 08:32 limitNotHolding: The firmware's limit is 80%, but the battery is at 93% and still charging.";
    EXPECT_EQ(told, Told{first});
    EXPECT_EQ(withdrawn(), std::vector<std::string>{});
    unplug();
    EXPECT_EQ(withdrawn(), std::vector<std::string>{"limitNotHolding"});
    until("18:00"); // 88 %
    plug();
    until("19:00");
    EXPECT_EQ(told, Told{first}) << "it was not within the limit";
    unplug();
    until("21:00"); // 76 %
    plug();
    until("22:00");
    EXPECT_EQ(told.size(), 2U);
}

TEST_F(LimitDays, AChargeWhileItSleepsIsToldOfTenMinutesAfterWaking) {
    keepsLimit = false;
    start.reset();
    launch();
    until("08:00");
    percent = 50;
    plug();
    sleepUntil("08:35"); // 85 %
    until("09:30");
    ASSERT_EQ(told.size(), 1U);
    EXPECT_TRUE(told[0].starts_with("1 08:45 limitNotHolding")) << told[0];
}

TEST_F(LimitDays, AMachineThatForgetsItsLimitInHibernationIsSpokenOfAfterIt) {
    launch();
    until("18:00");
    sleepUntil("08:00", [&] {
        limit = 100;
        start.reset();
    });
    EXPECT_EQ(told, Told{}) << "the events between waking and the refresh for that";
    until("08:05");
    const std::string first = "2 08:01 limitReset: The firmware's limit was 80% and is now 100%.";
    EXPECT_EQ(told, Told{first});
    until("12:00");
    EXPECT_EQ(withdrawn(), std::vector<std::string>{});
    setLimit(80);
    start = 75;
    until("12:02");
    EXPECT_EQ(withdrawn(), std::vector<std::string>{"limitReset"});
    sleepUntil("14:00", [&] { limit = 100; });
    until("15:00");
    EXPECT_EQ(told, (Told{first, "2 14:01 limitReset: The firmware's limit was 80% and is now 100%."}));
    quit();
    launch();
    until("16:00");
    EXPECT_EQ(told.size(), 2U);
}

TEST_F(LimitDays, ALimitForgottenInTheSecondOfTwoSleepsIsSpokenOf) {
    launch();
    until("18:00");
    fake.sessionEvents.prepareForSleep();
    fake.sessionEvents.wake();
    fake.mainLoop.advance(
        1s); // the lid was opened for a moment; what was due after waking did not come before it closed
    fake.sessionEvents.prepareForSleep();
    fake.mainLoop.advance(5s);
    start.reset();
    setLimit(100);
    fake.sessionEvents.wake();
    fake.powerSources.change(); // as many drivers do
    fake.mainLoop.advance(5s);
    EXPECT_EQ(told, Told{});
    until("18:05");
    ASSERT_EQ(told.size(), 1U);
    EXPECT_TRUE(told[0].ends_with("limitReset: The firmware's limit was 80% and is now 100%.")) << told[0];
}

TEST_F(LimitDays, ALimitThatIsGoneAfterAStartIsToldOfAtTheFirstTick) {
    launch();
    until("08:00");
    quit();
    setLimit(100);
    fake.clock.suspend(1h); // switched off
    launch();
    EXPECT_EQ(told, Told{});
    until("10:00");
    EXPECT_EQ(told, Told{"1 09:01 limitReset: The firmware's limit was 80% and is now 100%."});
}

TEST_F(LimitDays, AMachineWithoutALimitIsNeverSpokenOf) {
    limit.reset();
    start.reset();
    launch();
    until("08:00");
    for (int day = 0; day < 3; ++day) {
        plug();
        until("12:00");
        EXPECT_EQ(percent, 100);
        unplug();
        until("18:00");
        sleepUntil("08:00");
        quit();
        launch();
        until("08:05");
    }
    EXPECT_EQ(told, Told{});
    EXPECT_FALSE(model->hasFirmwareLimit.get());
    EXPECT_FALSE(fake.files.files.contains("/home/user/.local/state/Velmora/charge-limits"));
}

TEST_F(LimitDays, SnoozeAndQuietHoursHoldThemBack) {
    keepsLimit = false;
    start.reset();
    fake.defaults.setObject("quietEnabled", true); // 22:00 to 07:00
    launch();
    until("06:15");
    percent = 50; // 83 % at 6:48
    plug();
    until("08:00");
    ASSERT_EQ(told.size(), 1U);
    EXPECT_TRUE(told[0].starts_with("1 07:00 limitNotHolding")) << told[0];
    sleepUntil("09:00", [&] { limit = 100; });
    model->snooze();
    until("09:59");
    EXPECT_EQ(told.size(), 1U);
    until("10:02");
    ASSERT_EQ(told.size(), 2U);
    EXPECT_TRUE(told[1].starts_with("1 10:00 limitReset")) << told[1];
}

TEST_F(LimitDays, TheSwitchHoldsThemBack) {
    keepsLimit = false;
    start.reset();
    fake.defaults.setObject("firmwareLimitEnabled", false);
    launch();
    until("08:00");
    plug();
    until("12:00");
    sleepUntil("13:00", [&] { limit = 100; });
    until("14:00");
    EXPECT_EQ(told, Told{});
}

TEST_F(LimitDays, ComeAfterTheEnginesAlerts) {
    launch();
    until("08:00");
    plug();
    until("09:00");
    fake.defaults.setObject("limitEnabled", true); // reached at the tick that tells the other
    percent = 79;
    sleepUntil("09:30", [&] {
        limit = 100;
        percent = 79;
    });
    fake.mainLoop.advance(3s); // the refresh after waking
    percent = 80;
    fake.notificationCenter.requests.clear();
    fake.powerSources.setBattery(80, true, true);
    model->refresh(AppModel::Reason::event);
    ASSERT_EQ(fake.notificationCenter.requests.size(), 2U);
    EXPECT_EQ(fake.notificationCenter.requests[0].identifier, "chargeLimit");
    EXPECT_EQ(fake.notificationCenter.requests[1].identifier, "limitReset");
    EXPECT_EQ(fake.notificationCenter.requests[1].title, "Charge limit was reset");
}

TEST_F(LimitDays, ASlowDiskLosesNothing) {
    launch();
    until("08:00");
    quit();
    setLimit(100);
    fake.files.holdsLoads = true; // that of the history
    launch();
    until("08:00");
    EXPECT_EQ(told, Told{});
    fake.files.heldLoads.at(0)();
    until("09:00");
    ASSERT_EQ(told.size(), 1U);
}

} // namespace
