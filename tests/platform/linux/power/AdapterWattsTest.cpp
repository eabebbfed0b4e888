// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/AdapterWatts.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using Attributes = std::map<std::string, std::string, std::less<>>;

PowerSupply charger(Attributes attributes, const char* type = "USB") {
    attributes.insert({{"type", type}, {"online", "1\n"}});
    return {.name = "charger", .attributes = std::move(attributes)};
}

TEST(AdapterWatts, FollowWhatTheSupplyTells) {
    struct Row {
        const char* what;
        Attributes attributes;
        std::optional<std::int64_t> watts;
    };
    const Row rows[] = {
        {"nothing", {}, std::nullopt},
        {"rating", {{"voltage_max", "20000000\n"}, {"current_max", "3250000\n"}}, 65},
        {"rating by design", {{"voltage_max_design", "20000000\n"}, {"current_max", "3000000\n"}}, 60},
        {"rating by design beside an empty one",
         {{"voltage_max", "0\n"}, {"voltage_max_design", "20000000\n"}, {"current_max", "3000000\n"}},
         60},
        {"rating by design beside an empty one, at a low voltage",
         {{"voltage_now", "5000000\n"},
          {"current_now", "500000\n"},
          {"voltage_max", "0\n"},
          {"voltage_max_design", "20000000\n"},
          {"current_max", "3000000\n"}},
         60},
        {"contract alone", {{"voltage_now", "9000000\n"}, {"current_now", "3000000\n"}}, 27},
        {"rating before a lower contract",
         {{"voltage_now", "9000000\n"},
          {"current_now", "3000000\n"},
          {"voltage_max", "20000000\n"},
          {"current_max", "3250000\n"}},
         65},
        {"contract at the highest voltage, maxima of different offers",
         {{"voltage_now", "20000000\n"},
          {"current_now", "3250000\n"},
          {"voltage_max", "20000000\n"},
          {"current_max", "5000000\n"}},
         65},
        {"contract above a nonsensical maximum",
         {{"voltage_now", "20000000\n"},
          {"current_now", "3250000\n"},
          {"voltage_max", "16000000\n"},
          {"current_max", "4900000\n"}},
         65},
        {"highest voltage, but no contract current",
         {{"voltage_now", "20000000\n"},
          {"current_now", "0\n"},
          {"voltage_max", "20000000\n"},
          {"current_max", "2250000\n"}},
         45},
        {"rating without a current, contract below it",
         {{"voltage_now", "9000000\n"},
          {"current_now", "2000000\n"},
          {"voltage_max", "20000000\n"},
          {"current_max", "0\n"}},
         18},
        {"limit", {{"input_power_limit", "15000000\n"}}, 15},
        {"limit before a contract that has no maximum beside it",
         {{"input_power_limit", "15000000\n"}, {"voltage_now", "5000000\n"}, {"current_now", "2000000\n"}},
         15},
        {"measured draw a little above nominal",
         {{"voltage_now", "20100000\n"},
          {"current_now", "450000\n"},
          {"voltage_max", "20000000\n"},
          {"current_max", "3250000\n"}},
         65},
        {"measured draw a little below nominal",
         {{"voltage_now", "19950000\n"},
          {"current_now", "2900000\n"},
          {"voltage_max", "20000000\n"},
          {"current_max", "3250000\n"}},
         65},
        {"measured draw alone", {{"voltage_now", "20100000\n"}, {"current_now", "450000\n"}}, std::nullopt},
        {"measured draw beside a limit",
         {{"voltage_now", "9040000\n"}, {"current_now", "1000000\n"}, {"input_power_limit", "18000000\n"}},
         18},
        {"contract of the extended power range", {{"voltage_now", "28000000\n"}, {"current_now", "5000000\n"}}, 140},
        {"limit where the rating cannot be true",
         {{"input_power_limit", "15000000\n"}, {"voltage_max", "20000000\n"}, {"current_max", "50000000\n"}},
         15},
        {"voltage alone", {{"voltage_now", "5000000\n"}, {"voltage_max", "5000000\n"}}, std::nullopt},
        {"negative current", {{"voltage_now", "5000000\n"}, {"current_now", "-2000000\n"}}, std::nullopt},
        {"rounded up", {{"input_power_limit", "44500000\n"}}, 45},
        {"rounded down", {{"input_power_limit", "44499999\n"}}, 44},
        {"least", {{"input_power_limit", "1000000\n"}}, 1},
        {"too little", {{"input_power_limit", "999999\n"}}, std::nullopt},
        {"most", {{"input_power_limit", "300000000\n"}}, 300},
        {"too much", {{"input_power_limit", "300000001\n"}}, std::nullopt},
        {"no number", {{"input_power_limit", "15 W\n"}}, std::nullopt},
    };
    for (const Row& row : rows)
        EXPECT_EQ(adapterWatts({charger(row.attributes)}), row.watts) << row.what;
}

TEST(AdapterWatts, OnlyOnlineSuppliesCount) {
    PowerSupply off = charger({{"voltage_max", "5000000\n"}, {"current_max", "3000000\n"}});
    off.attributes.insert_or_assign("online", "0\n");
    EXPECT_EQ(adapterWatts({off}), std::nullopt);
    PowerSupply mouse = charger({{"input_power_limit", "15000000\n"}});
    mouse.attributes.insert_or_assign("scope", "Device\n");
    EXPECT_EQ(adapterWatts({mouse}), std::nullopt);
    EXPECT_EQ(adapterWatts({charger({{"input_power_limit", "15000000\n"}}, "Battery")}), std::nullopt);
    EXPECT_EQ(adapterWatts({}), std::nullopt);
}

TEST(AdapterWatts, TheStrongestSupplyCounts) {
    const PowerSupply weak = charger({{"input_power_limit", "15000000\n"}});
    const PowerSupply strong = charger({{"input_power_limit", "65000000\n"}});
    const PowerSupply silent = charger({}, "Mains");
    EXPECT_EQ(adapterWatts({weak, strong, silent}), 65);
    EXPECT_EQ(adapterWatts({silent, strong, weak}), 65);
}

TEST(AdapterWatts, APlainMainsAdapterHasNone) {
    EXPECT_EQ(adapterWatts({charger({}, "Mains")}), std::nullopt);
}

TEST(AdapterWatts, OfAProgrammableChargerAreThoseOfItsContract) {
    PowerSupply supply = charger({{"voltage_now", "20000000\n"},
                                  {"current_now", "3250000\n"},
                                  {"voltage_max", "16000000\n"},
                                  {"current_max", "4900000\n"}});
    supply.attributes.insert_or_assign("online", "2\n");
    supply.attributes.insert_or_assign("usb_type", "C PD [PD_PPS]\n");
    EXPECT_EQ(adapterWatts({supply}), 65);
}

} // namespace
