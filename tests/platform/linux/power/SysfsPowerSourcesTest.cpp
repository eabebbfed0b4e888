// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/SysfsPowerSources.h"

#include "battery/BatteryReader.h"
#include "platform/linux/power/UdevMonitor.h"
#include "support/FakeClock.h"
#include "support/FakeMainLoop.h"
#include "support/FakePowerSaving.h"
#include "support/Umockdev.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class SysfsPowerSourcesTest : public testing::Test {
protected:
    SimulatedSupplies supplies;
    FakeClock clock;
    FakeMainLoop loop{clock};
    FakePowerSaving powerSaving;
    SysfsPowerSources sources{"/sys", clock, loop};
    BatteryReader reader{sources, powerSaving};
    int changes = 0;
    std::unique_ptr<PowerSources::Notification> notification;

    /// A laptop at 50 %, on battery at 10 W.
    void addLaptop() {
        supplies.add("BAT0", {{"type", "Battery"},
                              {"status", "Discharging"},
                              {"present", "1"},
                              {"capacity", "50"},
                              {"energy_now", "25000000"},
                              {"energy_full", "50000000"},
                              {"energy_full_design", "50000000"},
                              {"power_now", "10000000"},
                              {"voltage_now", "12000000"}});
        supplies.add("AC", {{"type", "Mains"}, {"online", "0"}});
    }

    void observe() {
        notification = sources.notify([this] { ++changes; });
    }

    /// Runs the event loop until that many changes were reported.
    bool waitForChanges(int count) {
        return waitUntil([&] { return changes >= count; });
    }
};

} // namespace

TEST_F(SysfsPowerSourcesTest, ReadsTheFilesAnewEachTime) {
    addLaptop();
    EXPECT_EQ(reader.read().percent, 50);
    supplies.set("BAT0", "capacity", "49");
    EXPECT_EQ(reader.read().percent, 49);
}

TEST_F(SysfsPowerSourcesTest, FollowsABatteryThatComesAndGoes) {
    EXPECT_FALSE(reader.read().hasBattery);
    addLaptop();
    EXPECT_TRUE(reader.read().hasBattery);
    supplies.remove("BAT0");
    EXPECT_TRUE(reader.read().hasBattery);
    loop.advance(11s);
    EXPECT_FALSE(reader.read().hasBattery);
}

TEST_F(SysfsPowerSourcesTest, TakesAnEmptyBayAtItsWordWhenItStaysEmpty) {
    addLaptop();
    const BatteryState good = reader.read();
    supplies.set("BAT0", "present", "0");
    EXPECT_EQ(reader.read(), good);
    loop.advance(9s);
    EXPECT_EQ(reader.read(), good);
    loop.advance(2s);
    EXPECT_FALSE(reader.read().hasBattery);
}

TEST_F(SysfsPowerSourcesTest, GivesTheLastGoodValuesForAWhileWhenReadsFail) {
    addLaptop();
    const BatteryState good = reader.read();
    loop.advance(60s);
    for (const char* attribute : {"capacity", "energy_now", "energy_full", "status", "type"})
        supplies.fail("BAT0", attribute);
    EXPECT_EQ(reader.read(), good);
    loop.advance(9s);
    EXPECT_EQ(reader.read(), good);
    loop.advance(2s);
    EXPECT_FALSE(reader.read().hasBattery);
    loop.advance(60s);
    EXPECT_FALSE(reader.read().hasBattery);
}

TEST_F(SysfsPowerSourcesTest, TellsNoLimitOfABatteryThatCannotBeRead) {
    addLaptop();
    supplies.set("BAT0", "charge_control_end_threshold", "80");
    ASSERT_EQ(sources.snapshot().packLimits.size(), 1U);
    EXPECT_EQ(sources.snapshot().packLimits[0].limit, 80);
    for (const char* attribute : {"capacity", "energy_now", "energy_full", "status", "type"})
        supplies.fail("BAT0", attribute);
    const auto packs = sources.snapshot().packLimits;
    ASSERT_EQ(packs.size(), 1U);
    EXPECT_EQ(packs[0].limit, std::nullopt);
    EXPECT_TRUE(packs[0].tellsLimit);
}

TEST_F(SysfsPowerSourcesTest, WaitsNoShorterBecauseTheMachineSleptMeanwhile) {
    addLaptop();
    const BatteryState good = reader.read();
    supplies.set("BAT0", "present", "0");
    EXPECT_EQ(reader.read(), good);
    clock.suspend(1h);
    loop.advance(9s);
    EXPECT_EQ(reader.read().percent, 50);
    loop.advance(2s);
    EXPECT_FALSE(reader.read().hasBattery);
}

TEST_F(SysfsPowerSourcesTest, TellsOnItsOwnAfterTheTimeout) {
    addLaptop();
    reader.read();
    observe();
    loop.advance(60s);
    reader.read();
    for (const char* attribute : {"capacity", "energy_now", "energy_full"})
        supplies.fail("BAT0", attribute);
    EXPECT_TRUE(reader.read().hasBattery);
    changes = 0;
    loop.advance(20s);
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(reader.read().hasBattery);
}

TEST_F(SysfsPowerSourcesTest, TellsTheTimeFifteenSecondsAfterTheStart) {
    addLaptop();
    EXPECT_EQ(reader.read().minutesToEmpty, std::nullopt);
    observe();
    loop.advance(14s);
    EXPECT_EQ(changes, 0);
    loop.advance(1s);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(reader.read().minutesToEmpty, 150);
}

TEST_F(SysfsPowerSourcesTest, IsQuietOnceEverythingIsSettled) {
    addLaptop();
    reader.read();
    observe();
    loop.advance(16s);
    reader.read();
    changes = 0;
    loop.advance(1h);
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(loop.waiting(), 0U);
}

TEST_F(SysfsPowerSourcesTest, PassesAnEventOnAtOnceAndWhatLagsBehindItLater) {
    addLaptop();
    reader.read();
    observe();
    loop.advance(60s);
    reader.read();
    changes = 0;
    supplies.set("AC", "online", "1");
    supplies.event("AC");
    ASSERT_TRUE(waitForChanges(1));
    EXPECT_TRUE(reader.read().pluggedIn);
    loop.advance(1s);
    EXPECT_EQ(changes, 1) << "nothing differs from what was given";
    supplies.set("BAT0", "status", "Charging");
    loop.advance(1s);
    EXPECT_EQ(changes, 2);
    EXPECT_TRUE(reader.read().isCharging);
}

TEST_F(SysfsPowerSourcesTest, LooksAgainOnceAfterTheNextPercentAndFourTimesAfterAnythingElse) {
    addLaptop();
    notification = sources.notify([&] { // as the program does
        ++changes;
        reader.read();
    });
    reader.read();
    loop.advance(60s);
    int power = 10'000'000;
    const auto changesAfterEventOf = [&](const char* supply) {
        changes = 0;
        supplies.event(supply);
        EXPECT_TRUE(waitForChanges(1));
        for (int seconds = 0; seconds < 20; ++seconds) { // each look finds something new
            loop.advance(500ms);
            supplies.set("BAT0", "power_now", std::to_string(power += 100'000));
            loop.advance(500ms);
        }
        return changes;
    };
    supplies.set("BAT0", "capacity", "49");
    EXPECT_EQ(changesAfterEventOf("BAT0"), 2);
    EXPECT_EQ(changesAfterEventOf("BAT0"), 5) << "the same percent";
    supplies.set("BAT0", "capacity", "48");
    EXPECT_EQ(changesAfterEventOf("AC"), 5) << "nothing of the adapter has changed, yet";
    supplies.set("BAT0", "capacity", "47");
    supplies.set("AC", "online", "1");
    EXPECT_EQ(changesAfterEventOf("BAT0"), 5) << "the status lags";
    supplies.set("BAT0", "status", "Charging");
    EXPECT_EQ(changesAfterEventOf("BAT0"), 5);
    supplies.set("BAT0", "capacity", "48");
    supplies.set("BAT0", "status", "Not charging");
    EXPECT_EQ(changesAfterEventOf("BAT0"), 5);
    supplies.set("BAT0", "capacity", "47");
    EXPECT_EQ(changesAfterEventOf("BAT0"), 2);
}

TEST_F(SysfsPowerSourcesTest, APartOfAPercentExplainsNoEvent) {
    addLaptop();
    supplies.add("BAT1", {{"type", "Battery"},
                          {"status", "Discharging"},
                          {"present", "1"},
                          {"energy_now", "25000000"},
                          {"energy_full", "50000000"},
                          {"power_now", "0"}});
    notification = sources.notify([&] {
        ++changes;
        reader.read();
    });
    reader.read();
    loop.advance(60s);
    changes = 0;
    supplies.set("BAT0", "energy_now", "24990000");
    supplies.event("BAT0");
    ASSERT_TRUE(waitForChanges(1));
    loop.advance(1s);
    supplies.set("BAT0", "energy_now", "24980000");
    loop.advance(1s);
    EXPECT_EQ(changes, 2);
}

TEST_F(SysfsPowerSourcesTest, TellsTheTimeSoonAlsoWhenTheStatusLagsBehindThePlug) {
    addLaptop();
    reader.read();
    observe();
    loop.advance(60s);
    reader.read();
    supplies.set("AC", "online", "1");
    changes = 0;
    supplies.event("AC");
    ASSERT_TRUE(waitForChanges(1));
    reader.read();
    loop.advance(1500ms);
    supplies.set("BAT0", "status", "Charging");
    loop.advance(1s);
    EXPECT_TRUE(reader.read().isCharging);
    loop.advance(30s);
    EXPECT_EQ(reader.read().minutesToFull, 162); // 150 at its rate, but the end takes longer
    changes = 0;
    loop.advance(1h);
    EXPECT_EQ(changes, 0) << "and then it is quiet";
    EXPECT_EQ(loop.waiting(), 0U);
}

TEST_F(SysfsPowerSourcesTest, IgnoresEventsOfPeripherals) {
    addLaptop();
    supplies.add("mouse", {{"type", "Battery"}, {"scope", "Device"}, {"capacity", "80"}});
    reader.read();
    observe();
    loop.advance(60s);
    reader.read();
    changes = 0;
    supplies.event("mouse");
    supplies.event("AC");
    ASSERT_TRUE(waitForChanges(1));
    EXPECT_EQ(changes, 1);
    loop.advance(2s); // by now a second event would have been passed on
    EXPECT_EQ(changes, 1);
}

TEST_F(SysfsPowerSourcesTest, SaysNothingOnceNobodyListens) {
    addLaptop();
    reader.read();
    observe();
    notification.reset();
    supplies.set("AC", "online", "1");
    supplies.event("AC");
    loop.advance(60s);
    // The old event arrives before this one, which a new listener waits for.
    observe();
    supplies.event("AC");
    ASSERT_TRUE(waitForChanges(1));
    EXPECT_EQ(changes, 1);
}

TEST_F(SysfsPowerSourcesTest, StartsTheTimeAnewAfterSleep) {
    addLaptop();
    reader.read();
    loop.advance(60s);
    EXPECT_TRUE(reader.read().minutesToEmpty);
    clock.suspend(24h);
    EXPECT_EQ(reader.read().minutesToEmpty, std::nullopt);
    loop.advance(20s);
    EXPECT_TRUE(reader.read().minutesToEmpty);
}
