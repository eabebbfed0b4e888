// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/Notifier.h"

#include "alerts/Prefs.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

using Center = NotificationCenter;
using Status = NotificationCenter::AuthorizationStatus;

namespace {

struct NotifierTest : ::testing::Test {
    FakePlatform fake;
    FakeNotificationCenter& center = fake.notificationCenter;
    std::optional<Notifier> notifier;

    NotifierTest() { notifier.emplace(fake.notificationCenter, fake.bundle, fake.dialogs, fake.mainLoop); }

    void request() {
        notifier->requestIfNeeded();
        fake.mainLoop.runDue();
    }
};

const PendingAlert low{AlertKind::low, "Low battery", "Battery is at 20%. Plug in soon."};

TEST_F(NotifierTest, IsAvailableInAnApplicationBundle) {
    EXPECT_TRUE(notifier->available());
    for (const char* place :
         {"/opt/Velmora.APP", "/opt/Velmora.App", "/opt/Velmora", "/opt/Velmora.app/usr/bin", "/opt/app", ""}) {
        fake.bundle.place = place;
        EXPECT_FALSE(notifier->available()) << place;
    }
}

TEST_F(NotifierTest, IsAvailableWhereverItIsInstalled) {
    fake.bundle.installed = true;
    for (const char* prefix : {"/usr", "/usr/local", "/opt/velmora", "/gnu/store/velmora-0.1.0"}) {
        fake.bundle.place = prefix;
        EXPECT_TRUE(notifier->available()) << prefix;
    }
}

TEST_F(NotifierTest, IsNotAvailableInABundleWithoutAnIdentifier) {
    fake.bundle.name.reset();
    EXPECT_FALSE(notifier->available());
    fake.bundle.installed = true;
    EXPECT_FALSE(notifier->available());
}

TEST_F(NotifierTest, RegistersTheCategoriesWithTheirButtons) {
    notifier->setup();
    EXPECT_NE(center.delegate, nullptr);
    EXPECT_EQ(center.categories, (std::vector<std::vector<Center::Category>>{
                                     {{"VL_ALERT", {{"SNOOZE", "Snooze 1 hour"}}},
                                      {"VL_LOW_POWER", {{"SNOOZE", "Snooze 1 hour"}, {"TURN_ON", "Turn on"}}}}}));
}

TEST_F(NotifierTest, OnlyASuggestionThatCanBeFollowedHasTheSecondButton) {
    for (const AlertKind kind : allAlertKinds) {
        for (const bool canTurnOn : {false, true}) {
            notifier->deliver({kind, "", ""}, Prefs(), canTurnOn);
            EXPECT_EQ(center.requests.back().categoryIdentifier,
                      kind == AlertKind::lowPower && canTurnOn ? "VL_LOW_POWER" : "VL_ALERT")
                << rawValue(kind);
        }
    }
}

TEST_F(NotifierTest, PassesOnTheSecondButtonAndItsLackOnTheMainThread) {
    notifier->setup();
    int turnedOn = 0;
    int lacking = 0;
    EXPECT_TRUE(center.press("TURN_ON")) << "with nobody to tell";
    fake.mainLoop.runDue();
    notifier->onTurnOn = [&] { ++turnedOn; };
    notifier->onSuggestedWithoutButton = [&] { ++lacking; };
    EXPECT_TRUE(center.press("TURN_ON"));
    center.presentWithoutButtons("low");
    center.presentWithoutButtons("lowPower");
    EXPECT_EQ(turnedOn + lacking, 0) << "that was another thread";
    fake.mainLoop.runDue();
    EXPECT_EQ(turnedOn, 1);
    EXPECT_EQ(lacking, 1);
}

TEST_F(NotifierTest, DoesNothingOutsideABundle) {
    fake.bundle.place = "/home/user/build/bin";
    notifier->setup();
    request();
    notifier->deliver(low, Prefs());
    notifier->withdraw({AlertKind::low});
    EXPECT_EQ(center.delegate, nullptr);
    EXPECT_TRUE(center.categories.empty());
    EXPECT_EQ(center.statusQuestions, 0);
    EXPECT_TRUE(fake.dialogs.alerts.empty());
    EXPECT_TRUE(center.requests.empty());
    EXPECT_TRUE(center.removed.empty());
}

TEST_F(NotifierTest, DeliversUnderTheNameOfTheKind) {
    Prefs prefs;
    prefs.sounds[AlertKind::low] = "Frog";
    notifier->deliver(low, prefs);
    notifier->deliver(low, prefs);
    const Center::Request request{"low", "Low battery", "Battery is at 20%. Plug in soon.", "VL_ALERT", "Frog"};
    EXPECT_EQ(center.requests, (std::vector{request, request}));
    for (const AlertKind kind : allAlertKinds) {
        notifier->deliver({kind, "", ""}, prefs);
        EXPECT_EQ(center.requests.back().identifier, rawValue(kind));
    }
}

TEST_F(NotifierTest, DeliversWhatTheWatchOnTheLimitHasFound) {
    Prefs prefs;
    prefs.firmwareLimitSound = "Frog";
    notifier->deliver({LimitAlertKind::reset, "Charge limit was reset", "It was."}, prefs);
    prefs.firmwareLimitSound = "none";
    notifier->deliver({LimitAlertKind::notHolding, "Charge limit not holding", "It is not."}, prefs);
    EXPECT_EQ(center.requests,
              (std::vector<Center::Request>{
                  {"limitReset", "Charge limit was reset", "It was.", "VL_ALERT", "Frog"},
                  {"limitNotHolding", "Charge limit not holding", "It is not.", "VL_ALERT", std::nullopt}}));
    notifier->withdraw({LimitAlertKind::notHolding, LimitAlertKind::reset});
    notifier->withdraw(std::vector<LimitAlertKind>());
    EXPECT_EQ(center.removed, (std::vector<std::string>{"limitNotHolding", "limitReset"}));
}

TEST_F(NotifierTest, DeliversWithTheSoundOfTheKind) {
    const auto soundFor = [&](const char* name) {
        Prefs prefs;
        if (name != nullptr)
            prefs.sounds[AlertKind::low] = name;
        notifier->deliver(low, prefs);
        return center.requests.back().sound;
    };
    EXPECT_EQ(soundFor(nullptr), "default");
    EXPECT_EQ(soundFor("default"), "default");
    EXPECT_EQ(soundFor("none"), std::nullopt);
    EXPECT_EQ(soundFor("Submarine"), "Submarine");
    EXPECT_EQ(soundFor("None"), "None");
}

TEST_F(NotifierTest, ExplainsOnTheMainThreadBeforeItAsks) {
    fake.dialogs.chosenButton = 0;
    notifier->requestIfNeeded();
    EXPECT_TRUE(fake.dialogs.alerts.empty()) << "the answer came on another thread";
    fake.mainLoop.runDue();
    EXPECT_EQ(fake.journal, (FakeJournal{"bringToFront", "runAlert"}));
    ASSERT_EQ(fake.dialogs.alerts.size(), 1U);
    EXPECT_EQ(fake.dialogs.alerts[0].message, "Allow notifications?");
    EXPECT_EQ(
        fake.dialogs.alerts[0].informativeText,
        "Velmora uses notifications to remind you to unplug at your chosen charge level, when the battery is low, and "
        "when you have been plugged in too long. macOS will ask for permission next.");
    EXPECT_EQ(fake.dialogs.alerts[0].buttons, (std::vector<std::string>{"Continue", "Not Now"}));
    EXPECT_EQ(center.authorizationRequests, (std::vector{Center::Options{.alert = true, .sound = true}}));
}

TEST_F(NotifierTest, ExplainsAgainUntilTheUserContinues) {
    for (const std::optional<std::size_t> button : {std::optional<std::size_t>(1), std::optional<std::size_t>()}) {
        fake.dialogs.chosenButton = button;
        request();
    }
    EXPECT_EQ(fake.dialogs.alerts.size(), 2U);
    EXPECT_TRUE(center.authorizationRequests.empty());
    fake.dialogs.chosenButton = 0;
    request();
    EXPECT_EQ(center.authorizationRequests.size(), 1U);
}

TEST_F(NotifierTest, ShowsNothingOnceTheUserHasDecided) {
    for (const Status status : {Status::authorized, Status::denied}) {
        center.status = status;
        request();
    }
    EXPECT_EQ(center.statusQuestions, 2);
    EXPECT_TRUE(fake.journal.empty());
}

TEST_F(NotifierTest, DeliversWhateverTheUserHasDecided) {
    center.status = Status::denied;
    notifier->deliver(low, Prefs());
    EXPECT_EQ(center.requests.size(), 1U);
}

TEST_F(NotifierTest, CallsBackOnTheMainThreadWhenSnoozeIsPressed) {
    int snoozes = 0;
    notifier->onSnooze = [&] { ++snoozes; };
    notifier->setup();
    EXPECT_TRUE(center.press("SNOOZE")) << "completed before the snooze has run";
    EXPECT_EQ(snoozes, 0);
    fake.mainLoop.runDue();
    EXPECT_EQ(snoozes, 1);
}

TEST_F(NotifierTest, CompletesWhateverIsPressed) {
    int snoozes = 0;
    notifier->onSnooze = [&] { ++snoozes; };
    notifier->setup();
    for (const char* action : {"", "default", "snooze", "SNOOZE ", "SNOOZ"})
        EXPECT_TRUE(center.press(action));
    notifier->onSnooze = nullptr;
    EXPECT_TRUE(center.press("SNOOZE"));
    fake.mainLoop.runDue();
    EXPECT_EQ(snoozes, 0);
}

TEST_F(NotifierTest, ShowsABannerWithSoundAlsoInFront) {
    notifier->setup();
    EXPECT_EQ(center.delegate->willPresent({}), (Center::Options{.alert = true, .sound = true}));
}

TEST_F(NotifierTest, WithdrawsByKind) {
    notifier->withdraw({AlertKind::chargeLimit, AlertKind::tooLong});
    EXPECT_EQ(center.removed, (std::vector<std::string>{"chargeLimit", "tooLong"}));
}

TEST_F(NotifierTest, IsSilentOnceItIsGone) {
    int snoozes = 0;
    notifier->onSnooze = [&] { ++snoozes; };
    notifier->setup();
    center.press("SNOOZE");
    notifier->requestIfNeeded();
    notifier.reset();
    fake.mainLoop.runDue();
    EXPECT_EQ(snoozes, 0);
    EXPECT_TRUE(fake.dialogs.alerts.empty());
    EXPECT_EQ(center.delegate, nullptr);
}

} // namespace
