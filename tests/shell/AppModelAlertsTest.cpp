// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/Prefs.h"
#include "shell/AppModel.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using Reason = AppModel::Reason;
using Names = std::vector<std::string>;

namespace {

/// The model's reminders, and the times when it stays silent. The clock of the tests starts at 22:13 UTC.
struct AppModelAlertsTest : ::testing::Test {
    FakePlatform fake;
    std::optional<AppModel> made;

    AppModelAlertsTest() { fake.powerSources.setBattery(50, false); }

    AppModel& model() { return made ? *made : made.emplace(fake.platform()); }

    /// The kinds that were delivered since the last call.
    Names delivered() {
        Names names;
        for (const auto& request : fake.notificationCenter.requests)
            names.push_back(request.identifier);
        fake.notificationCenter.requests.clear();
        return names;
    }
    Names withdrawn() { return std::exchange(fake.notificationCenter.removed, {}); }
};

TEST_F(AppModelAlertsTest, RemindsOfWhatHappensWhileItRuns) {
    model().start();
    fake.powerSources.setBattery(20, false);
    fake.powerSources.change();
    EXPECT_EQ(delivered(), (Names{"low", "lowPower"})) << "in that order";
    fake.powerSources.setBattery(80, true);
    fake.mainLoop.advance(1min);
    EXPECT_EQ(delivered(), Names{"chargeLimit"});
}

TEST_F(AppModelAlertsTest, DeliversWithTheSoundsOfThePreferences) {
    model().start();
    fake.defaults.setObject("limitSound", Value("Tink"));
    fake.powerSources.setBattery(80, true);
    fake.powerSources.change();
    EXPECT_EQ(fake.notificationCenter.requests.at(0).sound, "Tink");
}

TEST_F(AppModelAlertsTest, NeverRemindsAtLaunchOrAfterWaking) {
    fake.powerSources.setBattery(10, false);
    model().start();
    EXPECT_EQ(delivered(), Names{});
    fake.powerSources.setBattery(90, true);
    fake.sessionEvents.wake();
    fake.mainLoop.advance(3s);
    EXPECT_EQ(delivered(), Names{});
    fake.mainLoop.advance(1h);
    EXPECT_EQ(delivered(), Names{}) << "an old story by now";
}

TEST_F(AppModelAlertsTest, RemindsOfBeingPluggedInTooLongFromItsOwnMeasure) {
    fake.defaults.setObject("limitEnabled", Value(false));
    model().start();
    fake.powerSources.setBattery(90, true);
    fake.powerSources.change();
    fake.mainLoop.advance(8h);
    EXPECT_EQ(delivered(), Names{});
    fake.mainLoop.advance(1min);
    EXPECT_EQ(delivered(), Names{"tooLong"});
}

TEST_F(AppModelAlertsTest, KeepsStillWhileSnoozed) {
    model().start();
    model().snooze();
    const Date until = fake.clock.now() + 1h;
    fake.powerSources.setBattery(20, false);
    fake.clock.setNow(until - 1s);
    model().refresh(Reason::timer);
    EXPECT_EQ(delivered(), Names{});
    EXPECT_EQ(model().snoozeUntil.get(), until);
    fake.clock.setNow(until);
    model().refresh(Reason::timer);
    EXPECT_EQ(delivered(), (Names{"low", "lowPower"}));
    EXPECT_EQ(model().snoozeUntil.get(), std::nullopt);
    EXPECT_EQ(fake.defaults.doubleForKey("snoozeUntil"), until.time_since_epoch().count()) << "stays stored";
}

TEST_F(AppModelAlertsTest, DoesNotEndTheSnoozeAtLaunchOrAfterWaking) {
    model().snooze();
    const std::optional<Date> until = model().snoozeUntil.get();
    fake.clock.setNow(*until + 1h);
    model().refresh(Reason::launch);
    model().refresh(Reason::wake);
    EXPECT_EQ(model().snoozeUntil.get(), until);
    model().refresh(Reason::event);
    EXPECT_EQ(model().snoozeUntil.get(), std::nullopt);
}

TEST_F(AppModelAlertsTest, FollowsTheStoredSnoozeNotTheShownOne) {
    model().start();
    Prefs::setSnoozeUntil(fake.defaults, fake.clock.now() + 1h);
    fake.powerSources.setBattery(20, false);
    model().refresh(Reason::event);
    EXPECT_EQ(delivered(), Names{});
    EXPECT_EQ(model().snoozeUntil.get(), std::nullopt);
    Prefs::setSnoozeUntil(fake.defaults, std::nullopt);
    model().refresh(Reason::event);
    EXPECT_EQ(delivered().size(), 2U);
}

TEST_F(AppModelAlertsTest, CancellingTheSnoozeLetsRemindersComeAgain) {
    model().start();
    model().snooze();
    const int readings = fake.powerSources.snapshots;
    model().cancelSnooze();
    EXPECT_EQ(model().snoozeUntil.get(), std::nullopt);
    EXPECT_EQ(fake.defaults.integerForKey("snoozeUntil"), 0);
    EXPECT_EQ(fake.powerSources.snapshots, readings);
    fake.powerSources.setBattery(20, false);
    model().refresh(Reason::timer);
    EXPECT_EQ(delivered().size(), 2U);
}

TEST_F(AppModelAlertsTest, SnoozesFromTheNotification) {
    model().start();
    EXPECT_TRUE(fake.notificationCenter.press("SNOOZE"));
    EXPECT_EQ(model().snoozeUntil.get(), std::nullopt);
    fake.mainLoop.runDue();
    EXPECT_EQ(model().snoozeUntil.get(), fake.clock.now() + 1h);
}

TEST_F(AppModelAlertsTest, HoldsRemindersBackDuringQuietHours) {
    fake.defaults.setObject("quietEnabled", Value(true)); // 22:00 to 7:00
    model().start();
    fake.powerSources.setBattery(20, false);
    fake.mainLoop.advance(8h + 46min);
    EXPECT_EQ(delivered(), Names{}) << "until 6:59";
    fake.mainLoop.advance(1min);
    EXPECT_EQ(delivered(), (Names{"low", "lowPower"}));
}

TEST_F(AppModelAlertsTest, QuietHoursDoNotKeepAnOldSnoozeShown) {
    fake.defaults.setObject("quietEnabled", Value(true));
    model().snooze();
    fake.clock.pass(1h);
    model().refresh(Reason::timer);
    EXPECT_EQ(model().snoozeUntil.get(), std::nullopt);
}

TEST_F(AppModelAlertsTest, DecidesButDeliversNothingOutsideABundle) {
    fake.bundle.name.reset();
    model().start();
    fake.powerSources.setBattery(20, false);
    fake.powerSources.change();
    fake.bundle.name = "app.velmora.Velmora";
    fake.mainLoop.advance(5min);
    EXPECT_EQ(delivered(), Names{}) << "what could not be posted is lost";
}

TEST_F(AppModelAlertsTest, TakesBackWhatPluggingInHasAnswered) {
    model().start();
    withdrawn();
    fake.powerSources.setBattery(20, false);
    fake.powerSources.change();
    EXPECT_EQ(withdrawn(), Names{});
    fake.powerSources.setBattery(20, true);
    fake.powerSources.change();
    EXPECT_EQ(withdrawn(), (Names{"low", "lowPower"}));
    fake.mainLoop.advance(10min);
    EXPECT_EQ(withdrawn(), Names{});
}

TEST_F(AppModelAlertsTest, TakesBackWhatUnpluggingHasAnswered) {
    fake.powerSources.setBattery(70, true);
    model().start();
    withdrawn();
    fake.powerSources.setBattery(69, false);
    fake.powerSources.change();
    EXPECT_EQ(withdrawn(), (Names{"chargeLimit", "tooLong"}));
    fake.powerSources.setBattery(69, true);
    model().refresh(Reason::wake);
    fake.powerSources.sources = std::nullopt;
    model().refresh(Reason::timer);
    EXPECT_EQ(withdrawn(), (Names{"low", "lowPower", "chargeLimit", "tooLong"}));
}

TEST_F(AppModelAlertsTest, TakesTheSuggestionBackWhenItIsFollowed) {
    model().start();
    withdrawn();
    fake.powerSaving.lowPowerMode = true;
    model().refresh(Reason::event);
    EXPECT_EQ(withdrawn(), Names{"lowPower"});
    model().refresh(Reason::event);
    fake.powerSaving.lowPowerMode = false;
    model().refresh(Reason::event);
    EXPECT_EQ(withdrawn(), Names{});
}

struct LowPowerModeTest : AppModelAlertsTest {
    using Offer = AppModel::LowPowerOffer;

    LowPowerModeTest() { fake.lowPowerSwitch.become(true, false); }

    /// The suggestion is given.
    void suggest() {
        fake.powerSources.setBattery(25, false);
        model().refresh(Reason::event);
        EXPECT_EQ(fake.notificationCenter.requests.back().identifier, "lowPower");
    }
    Offer offer() { return model().lowPowerOffer.get(); }
    void press() {
        fake.notificationCenter.press("TURN_ON");
        fake.mainLoop.runDue();
    }
    void lackButtons() {
        fake.notificationCenter.presentWithoutButtons("lowPower");
        fake.mainLoop.runDue();
    }
};

TEST_F(LowPowerModeTest, TheSuggestionHasTheButtonWhereTheModeIsOffered) {
    model().start();
    suggest();
    EXPECT_EQ(fake.notificationCenter.requests.back().categoryIdentifier, "VL_LOW_POWER");
    EXPECT_EQ(offer(), Offer::none) << "the button does it";
    press();
    EXPECT_EQ(fake.lowPowerSwitch.holds, 1);
    fake.lowPowerSwitch.become(true, true);
    EXPECT_EQ(offer(), Offer::turnOff);
    model().turnOffLowPowerMode();
    EXPECT_EQ(fake.lowPowerSwitch.releases, 1);
    EXPECT_EQ(offer(), Offer::none);
}

TEST_F(LowPowerModeTest, TheSuggestionHasNoButtonWhereItIsNot) {
    fake.lowPowerSwitch.become(false, false);
    model().start();
    suggest();
    EXPECT_EQ(fake.notificationCenter.requests.back().categoryIdentifier, "VL_ALERT");
    lackButtons();
    EXPECT_EQ(offer(), Offer::none);
}

TEST_F(LowPowerModeTest, EndsWhenTheMachineIsPluggedIn) {
    model().start();
    suggest();
    press();
    fake.lowPowerSwitch.become(true, true);
    fake.powerSources.setBattery(25, true);
    model().refresh(Reason::event);
    EXPECT_EQ(fake.lowPowerSwitch.releases, 1);
    EXPECT_EQ(offer(), Offer::none);
    press(); // a press that was on its way
    EXPECT_EQ(fake.lowPowerSwitch.holds, 1);
    model().refresh(Reason::timer);
    EXPECT_EQ(fake.lowPowerSwitch.releases, 1);
}

TEST_F(LowPowerModeTest, TheMenuOffersItWhereThereAreNoButtonsWhileItIsSuggested) {
    model().start();
    lackButtons();
    EXPECT_EQ(offer(), Offer::none) << "nothing was suggested";
    suggest();
    lackButtons();
    EXPECT_EQ(offer(), Offer::turnOn);
    model().refresh(Reason::timer);
    EXPECT_EQ(offer(), Offer::turnOn);
    model().turnOnLowPowerMode();
    EXPECT_EQ(fake.lowPowerSwitch.holds, 1);
    fake.lowPowerSwitch.become(true, true);
    EXPECT_EQ(offer(), Offer::turnOff);
    fake.powerSaving.switchLowPowerMode(true);
    fake.lowPowerSwitch.become(true, false); // the user has chosen another profile
    fake.powerSaving.switchLowPowerMode(false);
    EXPECT_NE(offer(), Offer::turnOff);
    lackButtons(); // suggested again
    EXPECT_EQ(offer(), Offer::turnOn);
    fake.powerSources.setBattery(25, true);
    model().refresh(Reason::event);
    EXPECT_EQ(offer(), Offer::none);
}

TEST_F(LowPowerModeTest, ARefusalEndsTheOffer) {
    model().start();
    suggest();
    lackButtons();
    EXPECT_EQ(offer(), Offer::turnOn);
    model().turnOnLowPowerMode();
    fake.lowPowerSwitch.become(false, false);
    EXPECT_EQ(offer(), Offer::none);
}

TEST_F(AppModelAlertsTest, TakingBackDoesNotTouchTheMemoryOfTheReminders) {
    model().start();
    fake.powerSources.setBattery(25, false);
    model().refresh(Reason::event);
    EXPECT_EQ(delivered(), Names{"lowPower"});
    fake.powerSaving.lowPowerMode = true;
    model().refresh(Reason::event);
    fake.powerSaving.lowPowerMode = false;
    model().refresh(Reason::event);
    EXPECT_EQ(delivered(), Names{"lowPower"}) << "the episode ended with the mode, not with the withdrawal";
}

} // namespace
