// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/PowerSupply.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace {

PowerSupply supply(std::map<std::string, std::string, std::less<>> attributes) {
    return {.name = "PSY", .attributes = std::move(attributes)};
}

TEST(PowerSupply, TextsLoseTheSpaceAroundThem) {
    struct Row {
        std::string content;
        std::optional<std::string> text;
    };
    const Row rows[] = {
        {"Charging\n", "Charging"},
        {"Not charging\n", "Not charging"},
        {"  45N1 173\t\r\n", "45N1 173"},
        {"", std::nullopt},
        {"\n", std::nullopt},
        {" \t\v\f\r\n", std::nullopt},
        {std::string("DELL\0\0\n", 7), "DELL"},
        {std::string("\0", 1), std::nullopt},
        {"Akku \xC3\xA4\n", "Akku \xC3\xA4"},
        {"Akku \xE4\n", std::nullopt},
    };
    for (const Row& row : rows)
        EXPECT_EQ(supply({{"model_name", row.content}}).text("model_name"), row.text) << &row - rows;
    EXPECT_EQ(supply({}).text("model_name"), std::nullopt);
}

TEST(PowerSupply, NumbersAreWholeDecimalNumbersAndNothingElse) {
    struct Row {
        const char* content;
        std::optional<std::int64_t> number;
    };
    const Row rows[] = {
        {"0\n", 0},
        {"100", 100},
        {"-26000\n", -26'000},
        {" 42 \n", 42},
        {"007\n", 7},
        {"-0\n", 0},
        {"9223372036854775807\n", 9'223'372'036'854'775'807},
        {"9223372036854775808\n", std::nullopt},
        {"", std::nullopt},
        {"\n", std::nullopt},
        {"-", std::nullopt},
        {"12.5", std::nullopt},
        {"1e3", std::nullopt},
        {"0x10", std::nullopt},
        {"12 34", std::nullopt},
        {"12%", std::nullopt},
        {"nan", std::nullopt},
        {"Unknown", std::nullopt},
        {"1,000", std::nullopt},
    };
    for (const Row& row : rows)
        EXPECT_EQ(supply({{"capacity", row.content}}).integer("capacity"), row.number) << row.content;
    EXPECT_EQ(supply({}).integer("capacity"), std::nullopt);
}

TEST(PowerSupply, TakesTheSecondAttributeWhereTheFirstIsNoNumber) {
    EXPECT_EQ(supply({{"a", "1"}, {"b", "2"}}).number("a", "b"), 1.0);
    EXPECT_EQ(supply({{"a", "0"}, {"b", "2"}}).number("a", "b"), 0.0);
    EXPECT_EQ(supply({{"a", "bad"}, {"b", "2"}}).number("a", "b"), 2.0);
    EXPECT_EQ(supply({{"b", "2"}}).number("a", "b"), 2.0);
    EXPECT_EQ(supply({{"b", "2"}}).number("a"), std::nullopt);
    EXPECT_EQ(supply({}).number("a", "b"), std::nullopt);
}

TEST(PowerSupply, SystemBatteriesAreThoseThatTheMachineRunsOn) {
    struct Row {
        const char* what;
        std::map<std::string, std::string, std::less<>> attributes;
        bool isBattery;
    };
    const Row rows[] = {
        {"plain", {{"type", "Battery\n"}}, true},
        {"in its bay", {{"type", "Battery\n"}, {"present", "1\n"}}, true},
        {"empty bay", {{"type", "Battery\n"}, {"present", "0\n"}}, false},
        {"empty bay that claims to be full", {{"type", "Battery\n"}, {"present", "0\n"}, {"capacity", "100\n"}}, false},
        {"unclear whether in its bay", {{"type", "Battery\n"}, {"present", "?\n"}}, true},
        {"system scope", {{"type", "Battery\n"}, {"scope", "System\n"}}, true},
        {"unknown scope", {{"type", "Battery\n"}, {"scope", "Unknown\n"}}, true},
        {"mouse", {{"type", "Battery\n"}, {"scope", "Device\n"}, {"online", "1\n"}}, false},
        {"mouse in capitals", {{"type", "Battery\n"}, {"scope", "DEVICE\n"}}, false},
        {"mouse in small letters", {{"type", "Battery\n"}, {"scope", "device\n"}}, false},
        {"UPS", {{"type", "UPS\n"}, {"present", "1\n"}}, false},
        {"adapter", {{"type", "Mains\n"}, {"online", "1\n"}}, false},
        {"without a type", {{"capacity", "50\n"}}, false},
        {"other letters", {{"type", "battery\n"}}, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(supply(row.attributes).isSystemBattery(), row.isBattery) << row.what;
}

TEST(PowerSupply, ExternalSuppliesAreEveryOtherTypeThatTellsWhetherItIsConnected) {
    for (const char* type : {"Mains", "USB", "Wireless", "USB_DCP", "USB_CDP", "USB_ACA", "USB_C", "USB_PD",
                             "USB_PD_DRP", "BrickID", "Unknown"}) {
        EXPECT_TRUE(supply({{"type", type}, {"online", "1\n"}}).isExternalSupply()) << type;
        EXPECT_TRUE(supply({{"type", type}, {"online", "0\n"}}).isExternalSupply()) << type;
        EXPECT_TRUE(supply({{"type", type}, {"present", "0\n"}}).isExternalSupply()) << type;
        EXPECT_FALSE(supply({{"type", type}}).isExternalSupply()) << type;
        EXPECT_FALSE(supply({{"type", type}, {"online", "1\n"}, {"scope", "Device\n"}}).isExternalSupply()) << type;
    }
    for (const char* type : {"Battery", "UPS"})
        EXPECT_FALSE(supply({{"type", type}, {"online", "1\n"}, {"present", "1\n"}}).isExternalSupply()) << type;
    EXPECT_FALSE(supply({{"online", "1\n"}}).isExternalSupply());
}

TEST(PowerSupply, IsOnlineAboveZeroAndByItsPresenceOnlyWhereNothingElseTells) {
    struct Row {
        const char* what;
        std::map<std::string, std::string, std::less<>> attributes;
        bool isOnline;
    };
    const Row rows[] = {
        {"off", {{"type", "Mains"}, {"online", "0\n"}}, false},
        {"on", {{"type", "Mains"}, {"online", "1\n"}}, true},
        {"programmable", {{"type", "USB"}, {"online", "2\n"}}, true},
        {"negative", {{"type", "USB"}, {"online", "-1\n"}}, false},
        {"present alone", {{"type", "USB"}, {"present", "1\n"}}, true},
        {"absent alone", {{"type", "USB"}, {"present", "0\n"}}, false},
        {"present but off", {{"type", "USB"}, {"present", "1\n"}, {"online", "0\n"}}, false},
        {"absent but on", {{"type", "USB"}, {"present", "0\n"}, {"online", "1\n"}}, true},
        {"unreadable and present", {{"type", "USB"}, {"present", "1\n"}, {"online", ""}}, true},
        {"a battery", {{"type", "Battery"}, {"online", "1\n"}}, false},
        {"a mouse", {{"type", "Battery"}, {"scope", "Device"}, {"online", "1\n"}}, false},
        {"a UPS", {{"type", "UPS"}, {"online", "1\n"}}, false},
        {"a dock's port for the phone", {{"type", "USB"}, {"scope", "Device"}, {"online", "1\n"}}, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(supply(row.attributes).isOnline(), row.isOnline) << row.what;
}

} // namespace
