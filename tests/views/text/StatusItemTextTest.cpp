// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/StatusItemText.h"

#include "alerts/Prefs.h"

#include <gtest/gtest.h>

#include <string>

namespace {

Prefs showing(bool percent, bool time) {
    Prefs prefs;
    prefs.showPercent = percent;
    prefs.showTime = time;
    return prefs;
}

BatteryState onBattery(std::int64_t percent, std::optional<std::int64_t> minutes) {
    BatteryState state;
    state.hasBattery = true;
    state.percent = percent;
    state.minutesToEmpty = minutes;
    return state;
}

TEST(StatusItemText, ShowsWhatThePreferencesWant) {
    struct Row {
        bool percent;
        bool time;
        std::optional<std::int64_t> minutes;
        const char* text;
    };
    const Row rows[] = {
        {true, true, 105, "80% \u00B7 1:45"},
        {true, false, 105, "80%"},
        {false, true, 105, "1:45"},
        {false, false, 105, ""},
        {true, true, {}, "80%"},
        {false, true, {}, ""},
    };
    for (const Row& row : rows) {
        const BatteryState state = onBattery(80, row.minutes);
        const Prefs prefs = showing(row.percent, row.time);
        EXPECT_EQ(statusItemText(state, prefs), row.text);
        const std::string title = *row.text == '\0' ? "" : std::string(" ") + row.text;
        EXPECT_EQ(statusItemTitle(state, prefs), title);
    }
}

TEST(StatusItemText, IsEmptyWithoutABattery) {
    BatteryState state = onBattery(80, 105);
    state.hasBattery = false;
    EXPECT_EQ(statusItemText(state, showing(true, true)), "");
    EXPECT_EQ(statusItemTitle(state, showing(true, true)), "");
    EXPECT_EQ(statusItemToolTip(BatteryState()), "No battery found");
}

TEST(StatusItemText, HasNoSeparatorWhenFullyCharged) {
    BatteryState state = onBattery(100, 105);
    state.pluggedIn = true;
    state.isCharged = true;
    EXPECT_EQ(statusItemTitle(state, showing(true, true)), " 100%");
}

TEST(StatusItemText, WidestTitleDependsOnThePreferencesAlone) {
    EXPECT_EQ(widestStatusItemTitle(showing(true, true)), " 100% \u00B7 00:00");
    EXPECT_EQ(widestStatusItemTitle(showing(true, false)), " 100%");
    EXPECT_EQ(widestStatusItemTitle(showing(false, true)), " 00:00");
    EXPECT_EQ(widestStatusItemTitle(showing(false, false)), "");
}

TEST(StatusItemText, NoTitleIsLongerThanTheWidest) {
    for (const bool percent : {false, true}) {
        for (const bool time : {false, true}) {
            const Prefs prefs = showing(percent, time);
            for (std::int64_t minutes = 0; minutes <= 2880; ++minutes) {
                ASSERT_LE(statusItemTitle(onBattery(minutes % 101, minutes), prefs).size(),
                          widestStatusItemTitle(prefs).size());
            }
        }
    }
}

TEST(StatusItemText, ToolTipHasALineForEachThingThatIsKnown) {
    BatteryState state = onBattery(80, std::nullopt);
    state.pluggedIn = true;
    state.isCharging = true;
    state.minutesToFull = 45;
    EXPECT_EQ(statusItemToolTip(state), "80% \u00B7 Charging, 45 min to full");
    state.cycleCount = 312;
    EXPECT_EQ(statusItemToolTip(state), "80% \u00B7 Charging, 45 min to full\nCycles: 312");
    state.designCapacity = 1000;
    EXPECT_EQ(statusItemToolTip(state), "80% \u00B7 Charging, 45 min to full\nCycles: 312");
    state.fullCapacity = 870;
    EXPECT_EQ(statusItemToolTip(state), "80% \u00B7 Charging, 45 min to full\nHealth: 87% (Fair)\nCycles: 312");
    state.cycleCount.reset();
    EXPECT_EQ(statusItemToolTip(state), "80% \u00B7 Charging, 45 min to full\nHealth: 87% (Fair)");
    state.designCapacity = 0;
    EXPECT_EQ(statusItemToolTip(state), "80% \u00B7 Charging, 45 min to full");
}

TEST(StatusItemText, ToolTipTellsZeroCyclesToo) {
    BatteryState state = onBattery(5, 10);
    state.cycleCount = 0;
    EXPECT_EQ(statusItemToolTip(state), "5% \u00B7 On battery, 10 min left\nCycles: 0");
}

TEST(StatusItemText, HealthIsRoundedLikePrintedNumbersAndGradedUnrounded) {
    struct Row {
        std::int64_t full;
        std::int64_t design;
        const char* line;
    };
    const Row rows[] = {
        {866, 1000, "Health: 87% (Fair)"},
        {864, 1000, "Health: 86% (Fair)"},
        {1, 8, "Health: 12% (Worn)"},
        {3, 8, "Health: 38% (Worn)"},
        {7, 8, "Health: 88% (Fair)"},
        {9004, 10'000, "Health: 90% (Good)"},
        {7999, 10'000, "Health: 80% (Worn)"},
        {9000, 10'000, "Health: 90% (Fair)"},
        {1049, 1000, "Health: 105% (Good)"},
        {1, 1000, "Health: 0% (Worn)"},
        {1'000'000'000'000, 1, "Health: 100000000000000% (Good)"},
    };
    for (const Row& row : rows) {
        BatteryState state = onBattery(50, 60);
        state.fullCapacity = row.full;
        state.designCapacity = row.design;
        EXPECT_EQ(statusItemToolTip(state), std::string("50% \u00B7 On battery, 1 h left\n") + row.line);
    }
}

TEST(StatusItemText, TheNumberInTheIconKeepsWhatTheGlyphMeans) {
    BatteryState state = onBattery(64, {});
    EXPECT_EQ(numberSymbol(state, showing(true, false)), "percent.64.level");
    EXPECT_EQ(numberSymbol(onBattery(5, {}), showing(true, true)), "percent.5.level");
    EXPECT_EQ(numberSymbol(onBattery(100, {}), showing(true, true)), "percent.100.level");
    state.pluggedIn = true;
    EXPECT_EQ(numberSymbol(state, showing(true, false)), "percent.64.plug");
    state.isCharging = true;
    EXPECT_EQ(numberSymbol(state, showing(true, false)), "percent.64.bolt");
    state.isCharged = true;
    EXPECT_EQ(numberSymbol(state, showing(true, false)), "percent.64.full");
}

TEST(StatusItemText, TheTimeIsInTheIconInsteadOfThePercentage) {
    EXPECT_EQ(numberSymbol(onBattery(64, 105), showing(false, true)), "time.1:45.64.level");
    EXPECT_EQ(numberSymbol(onBattery(100, 725), showing(false, true)), "time.12:05.100.level");
    EXPECT_EQ(numberSymbol(onBattery(64, 105), showing(true, true)), "percent.64.level") << "no room for both";
    BatteryState state = onBattery(64, 105);
    state.pluggedIn = state.isCharging = true;
    state.minutesToFull = 50;
    EXPECT_EQ(numberSymbol(state, showing(false, true)), "time.0:50.64.bolt");
}

TEST(StatusItemText, NoNumberWithoutABatteryOrAgainstThePreferences) {
    EXPECT_EQ(numberSymbol(BatteryState{}, showing(true, true)), "");
    EXPECT_EQ(numberSymbol(BatteryState{}, showing(false, true)), "");
    EXPECT_EQ(numberSymbol(onBattery(64, 105), showing(false, false)), "");
    EXPECT_EQ(numberSymbol(onBattery(64, {}), showing(false, true)), "") << "not estimated yet";
    BatteryState state = onBattery(64, 105);
    state.pluggedIn = true;
    EXPECT_EQ(numberSymbol(state, showing(false, true)), "") << "plugged in and not charging";
}

} // namespace
