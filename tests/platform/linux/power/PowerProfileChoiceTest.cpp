// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/PowerProfileChoice.h"

#include <gtest/gtest.h>

namespace {

const std::string newName(PowerProfileChoice::newName);
const std::string oldName(PowerProfileChoice::oldName);

} // namespace

TEST(PowerProfileChoice, IsOffWhenNobodyKnows) {
    EXPECT_FALSE(PowerProfileChoice{}.isLowPower());
}

TEST(PowerProfileChoice, BelievesTheDaemonUnderItsNewNameFirst) {
    PowerProfileChoice choice;
    choice.daemons[oldName].profile = "power-saver";
    EXPECT_TRUE(choice.isLowPower());
    choice.daemons[newName].profile = "balanced";
    EXPECT_FALSE(choice.isLowPower());
    choice.daemons[newName].profile = "power-saver";
    EXPECT_TRUE(choice.isLowPower());
}

TEST(PowerProfileChoice, BelievesAnyDaemonBeforeTheFirmware) {
    PowerProfileChoice choice;
    choice.firmware = "low-power\n";
    choice.daemons[oldName].profile = "something new";
    EXPECT_FALSE(choice.isLowPower());
}

TEST(PowerProfileChoice, BelievesADaemonThatHasLeftOnlyWhileThereIsNoOther) {
    PowerProfileChoice choice;
    choice.firmware = "balanced\n";
    choice.daemons[newName] = {.profile = "power-saver", .hasLeft = true};
    EXPECT_TRUE(choice.isLowPower()) << "it may only be restarting";
    choice.daemons[oldName].profile = "balanced";
    EXPECT_FALSE(choice.isLowPower());
    choice.daemons[oldName].hasLeft = true;
    EXPECT_TRUE(choice.isLowPower()) << "the new name comes first again";
}

TEST(PowerProfileChoice, KnowsTheFirmwaresNames) {
    for (const char* on : {"low-power\n", "quiet\n", "quiet"})
        EXPECT_TRUE((PowerProfileChoice{.daemons = {}, .firmware = on}.isLowPower())) << on;
    for (const char* off : {"balanced\n", "performance\n", "cool\n", "\n", "", "low-power quiet"})
        EXPECT_FALSE((PowerProfileChoice{.daemons = {}, .firmware = off}.isLowPower())) << off;
}
