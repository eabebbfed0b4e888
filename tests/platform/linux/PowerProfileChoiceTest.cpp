// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/PowerProfileChoice.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using Answer = std::optional<std::string>;

PowerProfileChoice choice(const Answer& newName, const Answer& oldName, const Answer& firmware) {
    PowerProfileChoice made;
    if (newName)
        made.daemons.emplace(PowerProfileChoice::newName, *newName);
    if (oldName)
        made.daemons.emplace(PowerProfileChoice::oldName, *oldName);
    made.firmware = firmware;
    return made;
}

TEST(PowerProfileChoice, TheDaemonCountsBeforeTheFirmwareAndItsNewNameBeforeItsOldOne) {
    struct Row {
        Answer newName;
        Answer oldName;
        Answer firmware;
        bool isLowPower;
    };
    const Row rows[] = {
        {{}, {}, {}, false},
        {"power-saver", {}, {}, true},
        {"balanced", {}, {}, false},
        {"performance", {}, {}, false},
        {"", {}, {}, false},
        {{}, "power-saver", {}, true},
        {{}, "balanced", {}, false},
        {"balanced", "power-saver", "low-power\n", false},
        {"power-saver", "balanced", "performance\n", true},
        {{}, "balanced", "low-power\n", false},
        {{}, "power-saver", "performance\n", true},
    };
    for (const Row& row : rows)
        EXPECT_EQ(choice(row.newName, row.oldName, row.firmware).isLowPower(), row.isLowPower) << &row - rows;
}

TEST(PowerProfileChoice, TheFirmwareSavesPowerInItsLowAndQuietProfiles) {
    for (const char* profile : {"low-power\n", "low-power", "quiet\n", "quiet \n"})
        EXPECT_TRUE(choice({}, {}, profile).isLowPower()) << profile;
    for (const char* profile : {"balanced\n", "balanced-performance\n", "performance\n", "cool\n", "custom\n", "\n", "",
                                "low-power-not\n", "power-saver\n"})
        EXPECT_FALSE(choice({}, {}, profile).isLowPower()) << profile;
}

} // namespace
