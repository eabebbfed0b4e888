// SPDX-License-Identifier: GPL-3.0-or-later
#include "battery/BatteryState.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

const Names full{"battery.100percent", "battery.100"};
const Names bolt{"battery.100.bolt", "bolt.fill"};
const Names plug{"powerplug.fill", "powerplug"};

BatteryState onBattery(std::int64_t percent) {
    BatteryState state;
    state.hasBattery = true;
    state.percent = percent;
    return state;
}

BatteryState pluggedIn(std::int64_t percent) {
    BatteryState state = onBattery(percent);
    state.pluggedIn = true;
    return state;
}

BatteryState charging(std::int64_t percent) {
    BatteryState state = pluggedIn(percent);
    state.isCharging = true;
    return state;
}

BatteryState withCapacities(std::optional<std::int64_t> fullCapacity, std::optional<std::int64_t> design) {
    BatteryState state = onBattery(50);
    state.fullCapacity = fullCapacity;
    state.designCapacity = design;
    return state;
}

TEST(BatteryState, IsAtFirstThatOfAMachineWithoutABattery) {
    const BatteryState state;
    EXPECT_FALSE(state.hasBattery);
    EXPECT_EQ(state.percent, 0);
    EXPECT_FALSE(state.isCharging);
    EXPECT_FALSE(state.pluggedIn);
    EXPECT_FALSE(state.isCharged);
    EXPECT_EQ(state.minutesToFull, std::nullopt);
    EXPECT_EQ(state.minutesToEmpty, std::nullopt);
    EXPECT_EQ(state.sourceName, std::nullopt);
    EXPECT_EQ(state.cycleCount, std::nullopt);
    EXPECT_EQ(state.designCapacity, std::nullopt);
    EXPECT_EQ(state.fullCapacity, std::nullopt);
    EXPECT_EQ(state.temperatureC, std::nullopt);
    EXPECT_EQ(state.voltage, std::nullopt);
    EXPECT_EQ(state.amperage, std::nullopt);
    EXPECT_EQ(state.adapterWatts, std::nullopt);
    EXPECT_FALSE(state.lowPowerMode);
    EXPECT_EQ(state.symbolNames(), Names{"battery.0"});
    EXPECT_EQ(state.shortTime(), std::nullopt);
    EXPECT_EQ(state.stateText(), "No battery found");
    EXPECT_EQ(state.healthLabel(), std::nullopt);
}

TEST(BatteryState, WithoutABatteryNothingElseCounts) {
    BatteryState state = charging(100);
    state.hasBattery = false;
    state.isCharged = true;
    state.minutesToFull = 10;
    state.minutesToEmpty = 10;
    EXPECT_EQ(state.symbolNames(), Names{"battery.0"});
    EXPECT_EQ(state.shortTime(), std::nullopt);
    EXPECT_EQ(state.stateText(), "No battery found");
}

TEST(BatteryState, ShowsTheLevelOnBattery) {
    struct Row {
        std::int64_t percent;
        const char* name;
    };
    const Row rows[] = {{0, "battery.0"},    {1, "battery.0"},    {12, "battery.0"},   {13, "battery.25"},
                        {14, "battery.25"},  {37, "battery.25"},  {38, "battery.50"},  {39, "battery.50"},
                        {62, "battery.50"},  {63, "battery.75"},  {64, "battery.75"},  {87, "battery.75"},
                        {88, "battery.100"}, {89, "battery.100"}, {100, "battery.100"}};
    for (const Row& row : rows)
        EXPECT_EQ(onBattery(row.percent).symbolNames(), Names{row.name}) << row.percent;
}

TEST(BatteryState, ShowsABoltWhileCharging) {
    for (const std::int64_t percent : {0, 50, 99, 100})
        EXPECT_EQ(charging(percent).symbolNames(), bolt) << percent;
}

TEST(BatteryState, ShowsAPlugWhileHeldBelowFull) {
    EXPECT_EQ(pluggedIn(79).symbolNames(), plug);
    EXPECT_EQ(pluggedIn(79).stateText(), "Plugged in, not charging");
    EXPECT_EQ(pluggedIn(79).shortTime(), std::nullopt);
    EXPECT_EQ(pluggedIn(99).symbolNames(), plug);
    EXPECT_EQ(pluggedIn(99).stateText(), "Plugged in, not charging");
}

TEST(BatteryState, IsFullyChargedWhenHeldAtAHundred) {
    EXPECT_EQ(pluggedIn(100).symbolNames(), full);
    EXPECT_EQ(pluggedIn(100).stateText(), "Fully charged");
    EXPECT_EQ(pluggedIn(100).shortTime(), std::nullopt);
}

TEST(BatteryState, AFullReportWinsOverEverythingButAMissingBattery) {
    for (const bool plugged : {false, true}) {
        for (const bool taking : {false, true}) {
            BatteryState state = onBattery(60);
            state.isCharged = true;
            state.pluggedIn = plugged;
            state.isCharging = taking;
            state.minutesToFull = 5;
            state.minutesToEmpty = 5;
            EXPECT_EQ(state.symbolNames(), full);
            EXPECT_EQ(state.stateText(), "Fully charged");
            EXPECT_EQ(state.shortTime(), std::nullopt);
        }
    }
}

TEST(BatteryState, ChargingWithoutAPlugIsChargingInEveryText) {
    BatteryState state = charging(40);
    state.pluggedIn = false;
    state.minutesToFull = 45;
    state.minutesToEmpty = 300;
    EXPECT_EQ(state.symbolNames(), bolt);
    EXPECT_EQ(state.shortTime(), "0:45");
    EXPECT_EQ(state.stateText(), "Charging, 45 min to full");
    state.minutesToFull.reset();
    EXPECT_EQ(state.shortTime(), std::nullopt);
    EXPECT_EQ(state.stateText(), "Charging, estimating time to full\u2026");
}

TEST(BatteryState, ShortTimeIsHoursAndTwoDigitsOfMinutes) {
    struct Row {
        std::int64_t minutes;
        const char* text;
    };
    const Row rows[] = {{0, "0:00"},   {1, "0:01"},   {5, "0:05"},    {9, "0:09"},     {10, "0:10"},
                        {59, "0:59"},  {60, "1:00"},  {61, "1:01"},   {90, "1:30"},    {105, "1:45"},
                        {119, "1:59"}, {120, "2:00"}, {600, "10:00"}, {2880, "48:00"}, {6000, "100:00"}};
    for (const Row& row : rows) {
        BatteryState state = onBattery(50);
        state.minutesToEmpty = row.minutes;
        EXPECT_EQ(state.shortTime(), row.text);
        state = charging(50);
        state.minutesToFull = row.minutes;
        EXPECT_EQ(state.shortTime(), row.text);
    }
}

TEST(BatteryState, ShortTimeIsThatOfTheDirection) {
    BatteryState state = onBattery(50);
    state.minutesToFull = 10;
    EXPECT_EQ(state.shortTime(), std::nullopt);
    state.minutesToEmpty = 20;
    EXPECT_EQ(state.shortTime(), "0:20");
    state.isCharging = true;
    EXPECT_EQ(state.shortTime(), "0:10");
    state.pluggedIn = true;
    EXPECT_EQ(state.shortTime(), "0:10");
    state.isCharging = false;
    EXPECT_EQ(state.shortTime(), std::nullopt);
}

TEST(BatteryState, SaysHowLongItLastsOrTakes) {
    BatteryState state = onBattery(50);
    EXPECT_EQ(state.stateText(), "On battery, estimating time left\u2026");
    state.minutesToEmpty = 125;
    EXPECT_EQ(state.stateText(), "On battery, 2 h 5 min left");
    state.minutesToEmpty = 0;
    EXPECT_EQ(state.stateText(), "On battery, 1 min left");

    state = charging(50);
    EXPECT_EQ(state.stateText(), "Charging, estimating time to full\u2026");
    state.minutesToFull = 45;
    EXPECT_EQ(state.stateText(), "Charging, 45 min to full");
}

TEST(BatteryState, GradesItsHealth) {
    struct Row {
        std::optional<std::int64_t> fullCapacity;
        std::optional<std::int64_t> design;
        std::optional<std::string> label;
    };
    const Row rows[] = {
        {1000, 1000, "Good"},
        {1200, 1000, "Good"},
        {901, 1000, "Good"},
        {900, 1000, "Fair"},
        {899, 1000, "Fair"},
        {800, 1000, "Fair"},
        {799, 1000, "Worn"},
        {1, 1000, "Worn"},
        {0, 1000, "Worn"},
        {90'001, 100'000, "Good"},
        {79'999, 100'000, "Worn"},
        {1, 1, "Good"},
        {900, 0, std::nullopt},
        {900, -5, std::nullopt},
        {900, std::nullopt, std::nullopt},
        {std::nullopt, 900, std::nullopt},
        {std::nullopt, std::nullopt, std::nullopt},
    };
    for (const Row& row : rows) {
        const BatteryState state = withCapacities(row.fullCapacity, row.design);
        EXPECT_EQ(state.healthLabel(), row.label) << row.fullCapacity.value_or(-1) << "/" << row.design.value_or(-1);
        EXPECT_EQ(state.healthPercent().has_value(), row.label.has_value());
    }
}

TEST(BatteryState, HealthIsNotRounded) {
    EXPECT_DOUBLE_EQ(withCapacities(2, 3).healthPercent().value(), 200.0 / 3);
    EXPECT_DOUBLE_EQ(withCapacities(1130, 1000).healthPercent().value(), 113);
}

TEST(BatteryState, EqualityTakesInEveryField) {
    const std::function<void(BatteryState&)> changes[] = {
        [](auto& state) { state.hasBattery = true; },  [](auto& state) { state.percent = 1; },
        [](auto& state) { state.isCharging = true; },  [](auto& state) { state.pluggedIn = true; },
        [](auto& state) { state.isCharged = true; },   [](auto& state) { state.minutesToFull = 0; },
        [](auto& state) { state.minutesToEmpty = 0; }, [](auto& state) { state.sourceName = ""; },
        [](auto& state) { state.cycleCount = 0; },     [](auto& state) { state.designCapacity = 0; },
        [](auto& state) { state.fullCapacity = 0; },   [](auto& state) { state.temperatureC = 0; },
        [](auto& state) { state.voltage = 0; },        [](auto& state) { state.amperage = 0; },
        [](auto& state) { state.adapterWatts = 0; },   [](auto& state) { state.lowPowerMode = true; },
    };
    EXPECT_EQ(std::size(changes), 16U);
    for (const auto& change : changes) {
        BatteryState state;
        change(state);
        EXPECT_NE(state, BatteryState()) << &change - changes;
        BatteryState same;
        change(same);
        EXPECT_EQ(state, same) << &change - changes;
    }
}

TEST(BatteryState, AbsentIsAnotherValueThanZeroAndZeroHasNoSign) {
    BatteryState absent;
    BatteryState zero;
    zero.amperage = 0.0;
    EXPECT_NE(absent, zero);
    BatteryState negative;
    negative.amperage = -0.0;
    EXPECT_EQ(zero, negative);
    zero.sourceName = "BAT0";
    negative.sourceName = std::string("BAT") + "0";
    EXPECT_EQ(zero, negative);
    negative.sourceName = "BAT1";
    EXPECT_NE(zero, negative);
}

} // namespace
