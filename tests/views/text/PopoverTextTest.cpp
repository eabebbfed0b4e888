// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/PopoverText.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

using namespace std::chrono_literals;

namespace {

BatteryState battery(std::int64_t percent) {
    BatteryState state;
    state.hasBattery = true;
    state.percent = percent;
    return state;
}

/// The row with that label; empty when there is none.
std::optional<DetailRow> row(const BatteryState& state, const std::string& label) {
    for (const DetailRow& each : detailRows(state)) {
        if (each.label == label)
            return each;
    }
    return std::nullopt;
}

TEST(PopoverText, TheRingIsRedUpToTwentyPercentOnBattery) {
    EXPECT_EQ(ringTint(battery(20)), Tint::red);
    EXPECT_EQ(ringTint(battery(21)), Tint::accent);
    BatteryState plugged = battery(20);
    plugged.pluggedIn = true;
    EXPECT_EQ(ringTint(plugged), Tint::accent);
    BatteryState odd = battery(20);
    odd.isCharging = true;
    EXPECT_EQ(ringTint(odd), Tint::red) << "not plugged in comes first";
}

TEST(PopoverText, TheRingIsGreenWhileChargingAndWhenFull) {
    BatteryState state = battery(50);
    state.pluggedIn = true;
    EXPECT_EQ(ringTint(state), Tint::accent);
    state.isCharging = true;
    EXPECT_EQ(ringTint(state), Tint::green);
    state.isCharging = false;
    state.isCharged = true;
    EXPECT_EQ(ringTint(state), Tint::green);
    state.isCharged = false;
    state.percent = 99;
    EXPECT_EQ(ringTint(state), Tint::accent);
    state.percent = 100;
    EXPECT_EQ(ringTint(state), Tint::green);
    state.pluggedIn = false;
    EXPECT_EQ(ringTint(state), Tint::accent);
}

TEST(PopoverText, TheRingIsTold) {
    BatteryState state = battery(80);
    EXPECT_EQ(ringDescription(state), "80 %, on battery");
    state.pluggedIn = true;
    EXPECT_EQ(ringDescription(state), "80 %, plugged in, not charging");
    state.isCharging = true;
    EXPECT_EQ(ringDescription(state), "80 %, charging");
    state.isCharged = true;
    EXPECT_EQ(ringDescription(state), "80 %, fully charged");
}

TEST(PopoverText, TheRingIsToldAsTheStateIs) {
    for (const std::int64_t percent : {50, 99, 100}) {
        for (int flags = 0; flags < 8; ++flags) {
            BatteryState state = battery(percent);
            state.pluggedIn = (flags & 1) != 0;
            state.isCharging = (flags & 2) != 0;
            state.isCharged = (flags & 4) != 0;
            const auto told = [&](const std::string& word) {
                return ringDescription(state).find(word) != std::string::npos;
            };
            const std::string text = state.stateText();
            EXPECT_EQ(told("fully charged"), text == "Fully charged") << percent << ' ' << flags;
            EXPECT_EQ(told(", charging"), text.starts_with("Charging")) << percent << ' ' << flags;
            EXPECT_EQ(told("on battery"), text.starts_with("On battery")) << percent << ' ' << flags;
        }
    }
}

TEST(PopoverText, TellsHowLongItHasBeenPluggedIn) {
    const Date now{Duration(1'700'000'000)};
    EXPECT_EQ(pluggedInText(std::nullopt, now), std::nullopt);
    EXPECT_EQ(pluggedInText(now - 2h - 5min - 59s, now), "Plugged in for 2 h 5 min");
    EXPECT_EQ(pluggedInText(now, now), "Plugged in for 1 min");
    EXPECT_EQ(pluggedInText(now + 3h, now), "Plugged in for 1 min") << "the clock was set back";
    EXPECT_TRUE(pluggedInText(Date::min(), Date::max()).has_value());
}

TEST(PopoverText, TheCycleGaugeIsTintedByTheCount) {
    EXPECT_EQ(cycleGauge(battery(50)), std::nullopt);
    for (const auto& [count, filled, tint] :
         std::vector<std::tuple<std::int64_t, std::int64_t, Tint>>{{0, 0, Tint::accent},
                                                                   {650, 650, Tint::accent},
                                                                   {700, 700, Tint::accent},
                                                                   {701, 701, Tint::orange},
                                                                   {900, 900, Tint::orange},
                                                                   {901, 901, Tint::red},
                                                                   {1200, 1000, Tint::red},
                                                                   {-1, 0, Tint::accent}}) {
        BatteryState state = battery(50);
        state.cycleCount = count;
        EXPECT_EQ(cycleGauge(state), (CycleGauge{std::to_string(count) + " of 1000", filled, tint}));
    }
}

TEST(PopoverText, ShowsTheHealthInItsColour) {
    BatteryState state = battery(50);
    state.designCapacity = 1000;
    for (const auto& [full, value, tint] :
         std::vector<std::tuple<std::int64_t, std::string, Tint>>{{901, "90% · Good", Tint::green},
                                                                  {900, "90% · Fair", Tint::orange},
                                                                  {800, "80% · Fair", Tint::orange},
                                                                  {799, "80% · Worn", Tint::red},
                                                                  {1040, "104% · Good", Tint::green}}) {
        state.fullCapacity = full;
        EXPECT_EQ(row(state, "Battery health"), (DetailRow{"Battery health", value, tint}));
    }
    state.designCapacity = 0;
    EXPECT_EQ(row(state, "Battery health"), std::nullopt);
}

TEST(PopoverText, ShowsThePowerFromATenthOfAWattOn) {
    BatteryState state = battery(50);
    state.voltage = 10;
    state.amperage = -0.73;
    EXPECT_EQ(row(state, "Power out"), (DetailRow{"Power out", "7.3 W"}));
    state.amperage = 0.01;
    EXPECT_EQ(row(state, "Power in"), (DetailRow{"Power in", "0.1 W"}));
    for (const double amperes : {0.005, 0.0, -0.0099}) {
        state.amperage = amperes;
        EXPECT_TRUE(detailRows(state).empty()) << amperes;
    }
    state.amperage.reset();
    EXPECT_TRUE(detailRows(state).empty());
}

TEST(PopoverText, ShowsTheAdapterOnlyWhilePluggedIn) {
    BatteryState state = battery(50);
    state.adapterWatts = 65;
    EXPECT_TRUE(detailRows(state).empty());
    state.pluggedIn = true;
    EXPECT_EQ(detailRows(state), std::vector{(DetailRow{"Adapter", "65 W"})});
}

TEST(PopoverText, ShowsTheDetailsInOrder) {
    BatteryState state = battery(50);
    state.pluggedIn = true;
    state.designCapacity = 100;
    state.fullCapacity = 95;
    state.temperatureC = 31.25;
    state.voltage = 12;
    state.amperage = 2;
    state.adapterWatts = 45;
    EXPECT_EQ(detailRows(state), (std::vector<DetailRow>{{"Battery health", "95% · Good", Tint::green},
                                                         {"Temperature", "31.2 °C"},
                                                         {"Power in", "24.0 W"},
                                                         {"Adapter", "45 W"}}));
    state.temperatureC = std::numeric_limits<double>::max();
    EXPECT_GT(row(state, "Temperature")->value.size(), 300U) << "however long it is";
}

TEST(PopoverText, ShowsADayInCells) {
    EXPECT_EQ(summaryCells({.day = {}, .avgPercent = 81, .minPercent = 62, .maxPercent = 100, .chargingMinutes = 65}),
              (SummaryCells{"81%", "62–100%", "1 h 5 min"}));
    EXPECT_EQ(
        summaryCells({.day = {}, .avgPercent = 5, .minPercent = 5, .maxPercent = 5, .chargingMinutes = 0}).charging,
        "–");
    EXPECT_EQ(
        summaryCells({.day = {}, .avgPercent = 5, .minPercent = 5, .maxPercent = 5, .chargingMinutes = 1}).charging,
        "1 min");
}

} // namespace
