// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/LimitMemory.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(LimitMemory, IsALineForEachBattery) {
    LimitMemory memory;
    memory.remember({.model = "5B10V98091", .design = 80400}, 80);
    memory.remember({.model = "DELL 0FDRT47 (2)", .design = std::nullopt}, 95);
    EXPECT_EQ(memory.encoded(), "80 80400 5B10V98091\n95 - DELL 0FDRT47 (2)\n");
    EXPECT_EQ(LimitMemory::decode(memory.encoded()), memory);
    EXPECT_EQ(LimitMemory().encoded(), "");
}

TEST(LimitMemory, LeavesOutWrongLines) {
    const LimitMemory one = LimitMemory::decode("80 57000 X\n");
    ASSERT_EQ(one.limits.size(), 1U);
    for (const char* line :
         {"0 57000 Y", "100 57000 Y", "-5 57000 Y", "80% 57000 Y", "80.5 57000 Y", "80 0 Y", "80 -1 Y", "80 57000",
          "80 57000 ", "80", "", " 80 57000 Y", "80  57000 Y", "99999999999999999999 57000 Y", "80 57000 Y\t",
          "80 57000 Y\r", "80\t57000\tY", "{\"limit\": 80}"})
        EXPECT_EQ(LimitMemory::decode(std::string(line) + "\n80 57000 X\n"), one) << line;
    EXPECT_EQ(LimitMemory::decode("80 57000 X"), one) << "cut off after the last byte that counts";
    EXPECT_EQ(LimitMemory::decode("80 57000 X\n80 57000 " + std::string(100'000, 'Z')), one);
    EXPECT_EQ(LimitMemory::decode(std::string("\0\xFF\n80 57000 X\n", 14)), one);
}

TEST(LimitMemory, AModelIsOneLineOfABoundedLength) {
    const PackLimit pack{
        .device = "BAT0", .model = "two\nlines\x7F" + std::string(5000, 'x'), .design = 1, .limit = 80};
    const auto battery = LimitMemory::Battery::of(pack);
    EXPECT_EQ(battery.model.substr(0, 11), "two lines x");
    LimitMemory memory;
    memory.remember(battery, 80);
    EXPECT_EQ(LimitMemory::decode(memory.encoded()), memory);
}

TEST(LimitMemory, DoesNotGrowForEver) {
    LimitMemory memory;
    for (int i = 0; i < 1000; ++i) {
        const LimitMemory::Battery battery{.model = std::to_string(i), .design = 1};
        memory.remember(battery, 80);
        EXPECT_TRUE(memory.limits.contains(battery));
    }
    EXPECT_EQ(memory.limits.size(), 32U);
}

} // namespace
