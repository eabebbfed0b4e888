// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryFile.h"
#include "shell/AppModel.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using Reason = AppModel::Reason;

namespace {

/// The model's history, and its use.
struct AppModelHistoryTest : ::testing::Test {
    const std::filesystem::path file = "/home/user/.local/share/Velmora/history.json";
    FakePlatform fake;
    std::optional<AppModel> made;

    AppModelHistoryTest() { fake.powerSources.setBattery(64, true); }

    AppModel& model() { return made ? *made : made.emplace(fake.platform()); }

    /// A history in which the laptop has been plugged in for that long, with a sample every five minutes.
    void pluggedInFor(Duration time) {
        SampleList samples;
        for (Duration age = time; age > 0s; age -= 5min)
            samples.push_back(
                {.t = (fake.clock.now() - age).time_since_epoch().count(), .p = 80, .c = false, .a = true});
        fake.files.files[file] = *encodeHistory(samples);
    }
};

TEST_F(AppModelHistoryTest, LoadsTheHistoryWhenItIsMade) {
    pluggedInFor(1h);
    EXPECT_EQ(model().history.samples.size(), 12U);
}

TEST_F(AppModelHistoryTest, ShowsTheBatteryWhileASlowDiskIsRead) {
    pluggedInFor(1h);
    fake.files.holdsLoads = true;
    model().start();
    EXPECT_EQ(model().state.get().percent, 64);
    fake.powerSources.setBattery(63, true);
    fake.powerSources.change();
    EXPECT_EQ(model().state.get().percent, 63);
    fake.mainLoop.advance(3min);
    EXPECT_TRUE(fake.files.replacedPaths.empty());
    EXPECT_EQ(model().pluggedSince.get(), std::nullopt);
}

TEST_F(AppModelHistoryTest, MakesUpForEverythingWhenTheHistoryHasCome) {
    const Date start = fake.clock.now();
    pluggedInFor(1h);
    fake.files.holdsLoads = true;
    model().start();
    fake.mainLoop.advance(30s);
    fake.powerSources.setBattery(10, false);
    fake.powerSources.change();
    std::vector<std::int64_t> shown;
    const Subscription state = model().state.subscribe([&](const BatteryState& now) { shown.push_back(now.percent); });
    fake.files.heldLoads.at(0)();
    EXPECT_EQ(shown, std::vector<std::int64_t>{10}) << "what was shown is not shown again";
    const auto& samples = model().history.samples;
    ASSERT_EQ(samples.size(), 14U);
    EXPECT_EQ(samples[12].date(), start);
    EXPECT_EQ(samples[12].p, 64);
    EXPECT_EQ(samples[13].date(), start + 30s);
    EXPECT_EQ(samples[13].p, 10);
    EXPECT_EQ(fake.notificationCenter.requests.size(), 2U) << "low, and in need of Low Power Mode";
    EXPECT_EQ(model().pluggedSince.get(), std::nullopt);
}

TEST_F(AppModelHistoryTest, KnowsSinceWhenItWasPluggedInAtALaunchThatHadToWait) {
    const Date start = fake.clock.now();
    pluggedInFor(1h);
    fake.files.holdsLoads = true;
    model().start();
    fake.mainLoop.advance(20min); // by now the history is too old to tell
    fake.files.heldLoads.at(0)();
    EXPECT_EQ(model().pluggedSince.get(), start - 1h);
    EXPECT_EQ(model().history.samples.size(), 12U + 21U);
}

TEST_F(AppModelHistoryTest, RemindsOfNothingThatHeldAtALaunchThatHadToWait) {
    fake.powerSources.setBattery(10, false);
    fake.files.holdsLoads = true;
    model().start();
    fake.mainLoop.advance(1min);
    fake.files.heldLoads.at(0)();
    fake.mainLoop.advance(1min);
    EXPECT_TRUE(fake.notificationCenter.requests.empty());
}

TEST_F(AppModelHistoryTest, TellsThatAnotherProgramHasChangedTheHistory) {
    fake.files.isClaimedByAnother = true;
    model().start();
    pluggedInFor(1h);
    fake.files.replaceByAnother(file, fake.files.files[file]);
    EXPECT_EQ(model().historyVersion.get(), 2);
    EXPECT_EQ(model().history.samples.size(), 13U);
}

TEST_F(AppModelHistoryTest, KnowsAtLaunchSinceWhenItHasBeenPluggedIn) {
    const Date seven = fake.clock.now();
    fake.clock.setNow(seven + 2h + 30min);
    pluggedInFor(2h + 30min);
    model().start();
    EXPECT_EQ(model().pluggedSince.get(), seven);
}

TEST_F(AppModelHistoryTest, KnowsAfterWakingSinceWhenItHasBeenPluggedIn) {
    fake.powerSources.setBattery(64, false);
    model().start();
    pluggedInFor(30min);
    model().history.samples = *decodeHistory(fake.files.files[file]);
    fake.powerSources.setBattery(64, true);
    const Date woken = fake.clock.now();
    model().refresh(Reason::wake);
    EXPECT_EQ(model().pluggedSince.get(), woken - 30min);
}

TEST_F(AppModelHistoryTest, DoesNotAskTheHistoryWhenItSawThePlug) {
    for (const Reason reason : {Reason::event, Reason::timer}) {
        pluggedInFor(1h);
        AppModel fresh(fake.platform());
        fresh.refresh(reason);
        EXPECT_EQ(fresh.pluggedSince.get(), fake.clock.now());
    }
}

TEST_F(AppModelHistoryTest, IsPluggedInFromNowOnWhereTheHistoryCannotSay) {
    model().start();
    EXPECT_EQ(model().pluggedSince.get(), fake.clock.now());
}

TEST_F(AppModelHistoryTest, RecordsEveryReadingButAnEventThatBringsNothingNew) {
    model().refresh(Reason::event); // there is no earlier reading that it could repeat
    model().refresh(Reason::launch);
    model().refresh(Reason::timer);
    model().refresh(Reason::wake);
    EXPECT_EQ(model().history.samples.size(), 4U);
    model().refresh(Reason::event);
    EXPECT_EQ(model().history.samples.size(), 4U);
    fake.powerSources.setBattery(63, true);
    model().refresh(Reason::event);
    EXPECT_EQ(model().history.samples.size(), 5U);
}

TEST_F(AppModelHistoryTest, TakesWhatTheSystemReportsForAnEventAndItsOwnTimerForNone) {
    model().start();
    fake.powerSources.change();
    fake.powerSaving.switchLowPowerMode(true);
    EXPECT_EQ(model().history.samples.size(), 1U);
    fake.mainLoop.advance(1min);
    EXPECT_EQ(model().history.samples.size(), 2U);
}

TEST_F(AppModelHistoryTest, RecordsWithTheTimeThatTheRefreshTook) {
    const Date before = fake.clock.now();
    model().start();
    EXPECT_EQ(model().history.samples.front().date(), before);
    EXPECT_EQ(model().history.samples.front().p, 64);
}

TEST_F(AppModelHistoryTest, CountsEveryRefresh) {
    std::int64_t expected = 0;
    for (const Reason reason : {Reason::launch, Reason::event, Reason::event, Reason::timer, Reason::wake}) {
        model().refresh(reason);
        EXPECT_EQ(model().historyVersion.get(), ++expected);
    }
    fake.powerSources.sources = std::nullopt;
    model().refresh(Reason::event);
    EXPECT_EQ(model().historyVersion.get(), ++expected) << "also where nothing could be read";
}

TEST_F(AppModelHistoryTest, PublishesTheStateBeforeItRecords) {
    model().start();
    std::vector<std::string> order;
    const Subscription state = model().state.subscribe([&](const auto&) { order.emplace_back("state"); });
    const Subscription version = model().historyVersion.subscribe([&](const auto&) { order.emplace_back("history"); });
    order.clear();
    fake.powerSources.setBattery(20, true);
    model().refresh(Reason::event);
    EXPECT_EQ(order, (std::vector<std::string>{"state", "history"}));
}

TEST_F(AppModelHistoryTest, SavesBeforeTheMachineSleepsAndDoesNotRefresh) {
    model().start();
    fake.mainLoop.advance(1min);
    ASSERT_EQ(decodeHistory(fake.files.files[file])->size(), 1U);
    const int readings = fake.powerSources.snapshots;
    fake.sessionEvents.prepareForSleep();
    EXPECT_EQ(decodeHistory(fake.files.files[file])->size(), 2U);
    EXPECT_EQ(fake.powerSources.snapshots, readings);
}

TEST_F(AppModelHistoryTest, ExportsToTheFileThatTheUserChose) {
    model().start();
    fake.dialogs.chosenFile = "/home/user/Documents/mine.csv";
    fake.journal.clear();
    model().exportHistoryCSV();
    EXPECT_EQ(fake.journal, (FakeJournal{"bringToFront", "runSaveDialog"}));
    ASSERT_EQ(fake.dialogs.saveDialogs.size(), 1U);
    EXPECT_EQ(fake.dialogs.saveDialogs[0].contentType, "text/csv");
    EXPECT_EQ(fake.dialogs.saveDialogs[0].suggestedName, "Velmora-history.csv");
    EXPECT_EQ(fake.files.files["/home/user/Documents/mine.csv"],
              "timestamp,percent,charging,plugged_in\n2023-11-14T22:13:20Z,64,false,true\n");
    EXPECT_TRUE(fake.dialogs.errorAlerts.empty());
    EXPECT_EQ(fake.files.documents.size(), 1U) << "it is the user's, not the program's";
}

TEST_F(AppModelHistoryTest, ExportsNothingWhenTheUserCancels) {
    model().start();
    const std::size_t writes = fake.files.replacedPaths.size();
    model().exportHistoryCSV();
    EXPECT_EQ(fake.files.replacedPaths.size(), writes);
    EXPECT_TRUE(fake.dialogs.errorAlerts.empty());
}

TEST_F(AppModelHistoryTest, SaysWhyAnExportFailed) {
    model().start();
    fake.dialogs.chosenFile = "/full/mine.csv";
    fake.files.refusesWrites = true;
    model().exportHistoryCSV();
    ASSERT_EQ(fake.dialogs.errorAlerts.size(), 1U);
    EXPECT_EQ(fake.dialogs.errorAlerts[0].first, "/full/mine.csv");
    EXPECT_EQ(fake.dialogs.errorAlerts[0].second, std::errc::no_space_on_device);
    EXPECT_EQ(model().history.samples.size(), 1U);
}

TEST_F(AppModelHistoryTest, ExportsWhatIsThereWhenTheFileIsChosen) {
    model().start();
    fake.dialogs.chosenFile = "/home/user/mine.csv";
    fake.dialogs.whileOpen = [this] { fake.mainLoop.advance(3min); };
    model().exportHistoryCSV();
    EXPECT_EQ(fake.files.files["/home/user/mine.csv"], model().history.csv());
    EXPECT_EQ(model().history.samples.size(), 4U);
}

TEST_F(AppModelHistoryTest, ResetsTheHistoryOnTheDiskToo) {
    model().start();
    const std::optional<Date> since = model().pluggedSince.get();
    const Date snoozedUntil = fake.clock.now() + 1h;
    model().snooze();
    model().resetHistory();
    EXPECT_TRUE(model().history.samples.empty());
    EXPECT_EQ(fake.files.files[file], "[]");
    EXPECT_EQ(model().historyVersion.get(), 2);
    EXPECT_EQ(model().pluggedSince.get(), since);
    EXPECT_EQ(model().snoozeUntil.get(), snoozedUntil);
    fake.mainLoop.advance(1min);
    EXPECT_EQ(model().history.samples.size(), 1U);
}

} // namespace
