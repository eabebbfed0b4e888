// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/SettingsForm.h"

#include "alerts/Prefs.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

TEST(SettingsForm, HasOneControlForEachPreference) {
    std::vector<std::string> keys;
    for (const SettingsSection& section : settingsSections()) {
        for (const SettingsControl& control : section.controls)
            keys.push_back(control.key);
    }
    std::set<std::string> expected;
    for (const auto& [key, value] : Prefs::defaults())
        expected.insert(key);
    EXPECT_EQ(keys.size(), 22U);
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()), expected);
}

TEST(SettingsForm, PutsTheNumberIntoTheLabelOfAStepper) {
    const SettingsControl stepper{.key = "low", .label = "Alert on battery at ", .labelEnd = "% or less"};
    EXPECT_EQ(stepperLabel(stepper, 20), "Alert on battery at 20% or less");
    EXPECT_EQ(stepperLabel(stepper, -5), "Alert on battery at -5% or less");
}

TEST(SettingsForm, OffersDefaultNoneAndTheSounds) {
    ASSERT_EQ(soundChoices().size(), 16U);
    EXPECT_EQ(soundChoices()[0].stored, "default");
    EXPECT_EQ(soundChoices()[1].stored, "none");
    EXPECT_EQ(soundChoices()[2].shown, "Glass");
    EXPECT_EQ(soundChoices()[15].stored, "Tink");
    EXPECT_FALSE(isHeardWhenChosen("default"));
    EXPECT_FALSE(isHeardWhenChosen("none"));
    EXPECT_TRUE(isHeardWhenChosen("Frog"));
}

TEST(SettingsForm, TakesMinutesOfADayForATime) {
    EXPECT_EQ(timeOfMinutes(0), (TimeOfDayChoice{0, 0}));
    EXPECT_EQ(timeOfMinutes(420), (TimeOfDayChoice{7, 0}));
    EXPECT_EQ(timeOfMinutes(1439), (TimeOfDayChoice{23, 59}));
    EXPECT_EQ(timeOfMinutes(1440), std::nullopt);
    EXPECT_EQ(timeOfMinutes(-1), std::nullopt);
}

} // namespace
