// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/PowerReading.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

using Attributes = std::map<std::string, std::string, std::less<>>;
using Supplies = std::vector<PowerSupply>;
using Flow = TimeEstimate::Flow;

/// A pack, 30 of 40 Wh at 12 V and 12 W. `attributes` are added or replaced; an empty one removes the attribute.
PowerSupply energyPack(const char* status, const Attributes& attributes = {}, const char* name = "BAT0") {
    PowerSupply supply{.name = name,
                       .attributes = {{"type", "Battery\n"},
                                      {"capacity", "75\n"},
                                      {"energy_now", "30000000\n"},
                                      {"energy_full", "40000000\n"},
                                      {"energy_full_design", "50000000\n"},
                                      {"power_now", "12000000\n"},
                                      {"voltage_now", "12000000\n"}}};
    supply.attributes.insert_or_assign("status", std::string(status) + "\n");
    for (const auto& [key, content] : attributes)
        supply.attributes.insert_or_assign(key, content);
    return supply;
}

/// A pack measured as charge: 3 of 4 Ah at 12 V (11 V nominal) and 1.5 A.
PowerSupply chargePack(const char* status, const Attributes& attributes = {}, const char* name = "BAT0") {
    PowerSupply supply{.name = name,
                       .attributes = {{"type", "Battery\n"},
                                      {"capacity", "75\n"},
                                      {"charge_now", "3000000\n"},
                                      {"charge_full", "4000000\n"},
                                      {"charge_full_design", "5000000\n"},
                                      {"current_now", "1500000\n"},
                                      {"voltage_min_design", "11000000\n"},
                                      {"voltage_now", "12000000\n"}}};
    supply.attributes.insert_or_assign("status", std::string(status) + "\n");
    for (const auto& [key, content] : attributes)
        supply.attributes.insert_or_assign(key, content);
    return supply;
}

PowerSupply deadPack(const char* name = "BAT0") {
    return energyPack("Unknown", {{"energy_now", "0"}, {"voltage_now", "0"}, {"capacity", "0"}, {"power_now", "0"}},
                      name);
}

PowerSupply mains(bool online) {
    return {.name = "AC", .attributes = {{"type", "Mains\n"}, {"online", online ? "1\n" : "0\n"}}};
}

PowerSupply usbCharger(const Attributes& attributes) {
    PowerSupply supply{.name = "ucsi-source-psy", .attributes = {{"type", "USB\n"}, {"online", "1\n"}}};
    for (const auto& [key, content] : attributes)
        supply.attributes.insert_or_assign(key, content);
    return supply;
}

PowerSupply mouse() {
    return {.name = "hidpp_battery_0",
            .attributes = {{"type", "Battery\n"},
                           {"scope", "Device\n"},
                           {"online", "1\n"},
                           {"status", "Discharging\n"},
                           {"capacity", "5\n"}}};
}

PowerSupply ups() {
    return {
        .name = "ups",
        .attributes = {
            {"type", "UPS\n"}, {"present", "1\n"}, {"online", "1\n"}, {"status", "Charging\n"}, {"capacity", "60\n"}}};
}

Dictionary described(const Supplies& supplies, const TimeEstimate::Minutes& minutes = {}) {
    return PowerReading::of(supplies).description(minutes);
}

Dictionary registered(const Supplies& supplies) {
    return PowerReading::of(supplies).registry();
}

/// The value of a key; empty when there is no such key.
std::optional<Value> at(const Dictionary& dictionary, std::string_view key) {
    const Value* value = find(dictionary, key);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::string sourceOf(const Supplies& supplies) {
    return *find(described(supplies), "Power Source State")->text();
}

TimeEstimate::Reading timed(const Supplies& supplies) {
    return PowerReading::of(supplies).forTimeEstimate();
}

TEST(PowerReading, DescribesOneBattery) {
    const Dictionary expected{
        {"Type", "InternalBattery"}, {"Is Present", true},    {"Power Source State", "Battery Power"},
        {"Current Capacity", 75.0},  {"Max Capacity", 100.0}, {"Is Charging", false},
        {"Is Charged", false},       {"Name", "BAT0"},        {"Time to Empty", 150},
        {"Time to Full Charge", -1},
    };
    const TimeEstimate::Minutes minutes{.toEmpty = 150, .toFull = std::nullopt};
    EXPECT_EQ(described({mains(false), energyPack("Discharging")}, minutes), expected);
}

TEST(PowerReading, DescribesTheTimeToFull) {
    const TimeEstimate::Minutes minutes{.toEmpty = std::nullopt, .toFull = 30};
    const Dictionary keys = described({mains(true), energyPack("Charging")}, minutes);
    EXPECT_EQ(at(keys, "Time to Empty"), Value(-1));
    EXPECT_EQ(at(keys, "Time to Full Charge"), Value(30));
}

TEST(PowerReading, RegistersOneBattery) {
    const Dictionary expected{
        {"CycleCount", 312},   {"DesignCapacity", 50'000}, {"MaxCapacity", 40'000},
        {"Temperature", 3050}, {"Voltage", 12'000},        {"Amperage", -1000},
    };
    EXPECT_EQ(registered({energyPack("Discharging", {{"cycle_count", "312\n"}, {"temp", "305\n"}})}), expected);
}

TEST(PowerReading, RegistersChargeInMilliampereHours) {
    const Dictionary expected{
        {"DesignCapacity", 5'000}, {"MaxCapacity", 4'000}, {"Voltage", 12'000}, {"Amperage", 1'500}};
    EXPECT_EQ(registered({mains(true), chargePack("Charging")}), expected);
}

TEST(PowerReading, LeavesOutWhatIsUnknown) {
    const PowerSupply bare{.name = "BAT0",
                           .attributes = {{"type", "Battery\n"}, {"status", "Discharging\n"}, {"capacity", "40\n"}}};
    EXPECT_EQ(registered({bare}), Dictionary());
    EXPECT_EQ(at(described({bare}), "Current Capacity"), Value(40.0));
}

TEST(PowerReading, WithoutABatteryThereIsNoneAndMainsPower) {
    const Dictionary expected{{"Type", "InternalBattery"}, {"Is Present", false}, {"Power Source State", "AC Power"}};
    PowerSupply emptyBay = energyPack("Unknown", {{"present", "0\n"}, {"capacity", "100\n"}});
    PowerSupply unreadable{.name = "BAT0", .attributes = {{"type", "Battery\n"}}};
    for (const Supplies& supplies :
         {Supplies{}, Supplies{mains(true)}, Supplies{mains(false)}, Supplies{mouse()}, Supplies{ups()},
          Supplies{mains(false), emptyBay}, Supplies{mains(false), unreadable}}) {
        const PowerReading reading = PowerReading::of(supplies);
        EXPECT_EQ(reading.description({}), expected);
        EXPECT_EQ(reading.registry(), Dictionary());
        EXPECT_EQ(reading.forTimeEstimate().flow, Flow::none);
        EXPECT_EQ(reading.forTimeEstimate().now, std::nullopt);
    }
}

TEST(PowerReading, PeripheralsAndUpsSayNothingAboutTheMachine) {
    const Supplies alone{mains(false), energyPack("Discharging")};
    const Supplies amongOthers{mains(false), energyPack("Discharging"), mouse(), ups()};
    EXPECT_EQ(described(amongOthers), described(alone));
    EXPECT_EQ(registered(amongOthers), registered(alone));
}

TEST(PowerReading, TellsWhereThePowerComesFrom) {
    const Attributes idle{{"power_now", "0\n"}};
    struct Row {
        const char* what;
        Supplies supplies;
        const char* source;
    };
    const char* const ac = "AC Power";
    const char* const battery = "Battery Power";
    const Row rows[] = {
        {"adapter online", {mains(true), energyPack("Charging")}, ac},
        {"adapter online, drained all the same", {mains(true), energyPack("Discharging")}, ac},
        {"one of two online", {mains(false), energyPack("Discharging"), usbCharger({})}, ac},
        {"programmable supply online", {mains(false), energyPack("Charging"), usbCharger({{"online", "2\n"}})}, ac},
        {"offline, but charging", {mains(false), energyPack("Charging")}, ac},
        {"offline, but held", {mains(false), energyPack("Not charging", idle)}, ac},
        {"offline, but full", {mains(false), energyPack("Full", idle)}, ac},
        {"offline, said to be charging, draining",
         {mains(false), energyPack("Charging", {{"power_now", "-12000000\n"}})},
         battery},
        {"offline, held at its limit, draining",
         {mains(false), energyPack("Not charging", {{"power_now", "-12000000\n"}})},
         battery},
        {"offline, full, draining", {mains(false), chargePack("Full", {{"current_now", "-900000\n"}})}, battery},
        {"no adapter to be seen, held, draining",
         {energyPack("Not charging", {{"power_now", "-12000000\n"}})},
         battery},
        {"one held, one draining",
         {mains(false), energyPack("Not charging", idle), energyPack("Full", {{"power_now", "-12000000\n"}}, "BAT1")},
         battery},
        {"online and draining", {mains(true), energyPack("Not charging", {{"power_now", "-12000000\n"}})}, ac},
        {"no adapter to be seen, charging", {energyPack("Charging")}, ac},
        {"no adapter to be seen, held", {energyPack("Not charging", idle)}, ac},
        {"no adapter to be seen, full", {energyPack("Full", idle)}, ac},
        {"offline and discharging", {mains(false), energyPack("Discharging")}, battery},
        {"discharging", {energyPack("Discharging")}, battery},
        {"discharging at a rate of nothing", {energyPack("Discharging", idle)}, battery},
        {"one charges from the other",
         {mains(false), energyPack("Charging"), energyPack("Discharging", {}, "BAT1")},
         battery},
        {"one held, one discharging",
         {mains(false), energyPack("Not charging", idle), energyPack("Discharging", {}, "BAT1")},
         battery},
        {"offline and unknown", {mains(false), energyPack("Unknown", idle)}, battery},
        {"unknown and drawn from", {energyPack("Unknown")}, battery},
        {"unknown and drawn from, by the current", {chargePack("Unknown")}, battery},
        {"unknown and drawn from, with a sign", {energyPack("Unknown", {{"power_now", "-12000000\n"}})}, battery},
        {"unknown and idle", {energyPack("Unknown", idle)}, ac},
        {"unknown with the placeholder of 1 mA", {chargePack("Unknown", {{"current_now", "1000\n"}})}, ac},
        {"unknown, just below 10 mA", {chargePack("Unknown", {{"current_now", "8000\n"}})}, ac},
        {"unknown, 10 mA", {chargePack("Unknown", {{"current_now", "10000\n"}})}, battery},
        {"unknown, just below 0.1 W", {energyPack("Unknown", {{"power_now", "99000\n"}})}, ac},
        {"unknown, 0.1 W", {energyPack("Unknown", {{"power_now", "100000\n"}})}, battery},
        {"unknown, one of two drawn from", {energyPack("Unknown", idle), energyPack("Unknown", {}, "BAT1")}, battery},
        {"a mouse that is awake", {mouse(), energyPack("Discharging")}, battery},
        {"the battery's own online", {energyPack("Discharging", {{"online", "1\n"}})}, battery},
        {"present instead of online",
         {{.name = "A", .attributes = {{"type", "USB"}, {"present", "1"}}}, energyPack("Discharging")},
         ac},
        {"absent instead of offline",
         {{.name = "A", .attributes = {{"type", "USB"}, {"present", "0"}}}, energyPack("Unknown", idle)},
         battery},
        {"a supply that tells neither",
         {{.name = "A", .attributes = {{"type", "USB"}}}, energyPack("Unknown", idle)},
         ac},
    };
    for (const Row& row : rows)
        EXPECT_EQ(sourceOf(row.supplies), row.source) << row.what;
}

TEST(PowerReading, ChargesWhenTheStatusSaysSoAndNothingFlowsOut) {
    struct Row {
        const char* what;
        PowerSupply pack;
        bool isCharging;
    };
    const Row rows[] = {
        {"charging", energyPack("Charging"), true},
        {"charging at an unknown rate", energyPack("Charging", {{"power_now", ""}}), true},
        {"charging at a rate of nothing", energyPack("Charging", {{"power_now", "0"}}), true},
        {"power flows out", energyPack("Charging", {{"power_now", "-12000000"}}), false},
        {"current flows out", chargePack("Charging", {{"current_now", "-1500000"}}), false},
        {"discharging", energyPack("Discharging"), false},
        {"held", energyPack("Not charging"), false},
        {"full", energyPack("Full"), false},
        {"unknown", energyPack("Unknown"), false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(at(described({mains(true), row.pack}), "Is Charging"), Value(row.isCharging)) << row.what;
}

TEST(PowerReading, IsChargedWhenFullOrHeldNearlyFullOnMains) {
    struct Row {
        const char* status;
        const char* capacity;
        bool online;
        bool isCharged;
    };
    const Row rows[] = {
        {"Full", "100", true, true},        {"Full", "60", true, true},          {"Not charging", "100", true, true},
        {"Not charging", "95", true, true}, {"Not charging", "94", true, false}, {"Not charging", "80", true, false},
        {"Unknown", "100", true, true},     {"Unknown", "95", true, true},       {"Unknown", "94", true, false},
        {"Charging", "100", true, false},   {"Discharging", "100", true, false}, {"Discharging", "100", false, false},
        {"Unknown", "100", false, false},
    };
    for (const Row& row : rows) {
        const Supplies supplies{mains(row.online), energyPack(row.status, {{"capacity", row.capacity}})};
        EXPECT_EQ(at(described(supplies), "Is Charged"), Value(row.isCharged)) << row.status << " " << row.capacity;
    }
}

TEST(PowerReading, IsNamedByTheModelOfTheFirstPack) {
    const PowerSupply named = energyPack("Full", {{"model_name", " 45N1 \n"}}, "BAT0");
    const PowerSupply second = energyPack("Full", {{"model_name", "Other\n"}}, "BAT1");
    EXPECT_EQ(at(described({named, second}), "Name"), Value("45N1"));
    EXPECT_EQ(at(described({energyPack("Full")}), "Name"), Value("BAT0"));
}

TEST(PowerReading, OneBatteryIsMeasuredByItsPercentage) {
    const Dictionary keys = described({energyPack("Discharging", {{"capacity", "73\n"}})});
    EXPECT_EQ(at(keys, "Current Capacity"), Value(73.0));
    EXPECT_EQ(at(keys, "Max Capacity"), Value(100.0));
}

TEST(PowerReading, SeveralBatteriesAreWeighedByWhatTheyHold) {
    const PowerSupply small =
        energyPack("Not charging", {{"energy_now", "8000000"}, {"energy_full", "10000000"}, {"capacity", "80"}});
    const PowerSupply large = energyPack("Not charging", {{"energy_now", "2800000"}, {"capacity", "7"}}, "BAT1");
    const Dictionary keys = described({small, large});
    EXPECT_EQ(at(keys, "Current Capacity"), Value(10'800.0));
    EXPECT_EQ(at(keys, "Max Capacity"), Value(50'000.0));
}

TEST(PowerReading, AnEmptyPackCountsAndADeadOneDoesNot) {
    const PowerSupply working = energyPack("Charging", {}, "BAT1");
    const PowerSupply empty = energyPack("Unknown", {{"energy_now", "0"}, {"capacity", "0"}, {"power_now", "0"}});
    EXPECT_EQ(at(described({empty, working}), "Max Capacity"), Value(80'000.0));
    EXPECT_EQ(described({deadPack(), working}), described({working}));
    EXPECT_EQ(registered({deadPack(), working}), registered({working}));
    const Dictionary alone = described({deadPack()});
    EXPECT_EQ(at(alone, "Is Present"), Value(true));
    EXPECT_EQ(at(alone, "Current Capacity"), Value(0.0));
}

TEST(PowerReading, UnlikeUnitsAreTurnedIntoEnergy) {
    const Supplies supplies{chargePack("Discharging"), energyPack("Discharging", {}, "BAT1")};
    const Dictionary keys = described(supplies);
    EXPECT_EQ(at(keys, "Current Capacity"), Value(63'000.0)); // 3 Ah at 11 V, and 30 Wh
    EXPECT_EQ(at(keys, "Max Capacity"), Value(84'000.0));
    EXPECT_EQ(at(registered(supplies), "DesignCapacity"), Value(105'000));
    EXPECT_DOUBLE_EQ(timed(supplies).rate.value(), -30'000); // 1.5 A at 12 V, and 12 W
}

TEST(PowerReading, UnlikeUnitsThatCannotBeTurnedGiveTheMean) {
    const PowerSupply unknownVoltage =
        chargePack("Discharging", {{"voltage_now", ""}, {"voltage_min_design", ""}, {"capacity", "25"}});
    const Supplies supplies{unknownVoltage, energyPack("Discharging", {}, "BAT1")};
    const Dictionary keys = described(supplies);
    EXPECT_EQ(at(keys, "Current Capacity"), Value(50.0));
    EXPECT_EQ(at(keys, "Max Capacity"), Value(100.0));
    EXPECT_EQ(at(registered(supplies), "DesignCapacity"), std::nullopt);
    EXPECT_EQ(timed(supplies).flow, Flow::none);
}

TEST(PowerReading, PacksWithoutAmountsGiveTheMean) {
    const PowerSupply bare{.name = "BAT0",
                           .attributes = {{"type", "Battery"}, {"status", "Discharging"}, {"capacity", "25"}}};
    EXPECT_EQ(at(described({bare, energyPack("Discharging", {}, "BAT1")}), "Current Capacity"), Value(50.0));
}

TEST(PowerReading, SeveralBatteriesChargeIfOneDoesAndElseDischargeIfOneDoes) {
    struct Row {
        const char* first;
        const char* second;
        bool isCharging;
        bool isCharged;
    };
    const Row rows[] = {
        {"Charging", "Full", true, false},
        {"Not charging", "Charging", true, false},
        {"Charging", "Discharging", true, false},
        {"Discharging", "Full", false, false},
        {"Full", "Full", false, true},
        {"Full", "Not charging", false, false},
        {"Not charging", "Unknown", false, false},
    };
    for (const Row& row : rows) {
        const Dictionary keys = described({mains(true), energyPack(row.first), energyPack(row.second, {}, "BAT1")});
        EXPECT_EQ(at(keys, "Is Charging"), Value(row.isCharging)) << row.first << ", " << row.second;
        EXPECT_EQ(at(keys, "Is Charged"), Value(row.isCharged)) << row.first << ", " << row.second;
    }
}

TEST(PowerReading, SeveralBatteriesAreChargedWhenEachIsFullOrHeldNearlyFull) {
    const PowerSupply full = energyPack("Full");
    const auto held = [](const char* status, const char* capacity, const char* now) {
        return energyPack(status, {{"capacity", capacity}, {"energy_now", now}}, "BAT1");
    };
    EXPECT_EQ(at(described({mains(true), full, held("Not charging", "95", "38000000")}), "Is Charged"), Value(true));
    EXPECT_EQ(at(described({mains(true), full, held("Unknown", "95", "38000000")}), "Is Charged"), Value(true));
    EXPECT_EQ(at(described({mains(true), full, held("Not charging", "94", "37600000")}), "Is Charged"), Value(false));
    EXPECT_EQ(at(described({mains(true), full, held("Discharging", "99", "39600000")}), "Is Charged"), Value(false));
    EXPECT_EQ(at(described({mains(false), full, held("Not charging", "95", "38000000")}), "Is Charged"), Value(true));
    EXPECT_EQ(at(described({mains(false), full, held("Discharging", "95", "38000000")}), "Is Charged"), Value(false));
    // 94.6 %, which is shown as 95 %, and 94.4 %.
    EXPECT_EQ(at(described({mains(true), full, held("Not charging", "", "37840000")}), "Is Charged"), Value(true));
    EXPECT_EQ(at(described({mains(true), full, held("Not charging", "", "37760000")}), "Is Charged"), Value(false));
}

TEST(PowerReading, CapacitiesAreSummedAndLeftOutUnlessEveryPackTellsBoth) {
    const PowerSupply second = energyPack("Full", {}, "BAT1");
    const Dictionary keys = registered({energyPack("Full"), second});
    EXPECT_EQ(at(keys, "DesignCapacity"), Value(100'000));
    EXPECT_EQ(at(keys, "MaxCapacity"), Value(80'000));
    for (const char* missing : {"energy_full", "energy_full_design"}) {
        for (const char* content : {"", "0\n"}) {
            const Dictionary lacking = registered({energyPack("Full", {{missing, content}}), second});
            EXPECT_EQ(at(lacking, "DesignCapacity"), std::nullopt) << missing;
            EXPECT_EQ(at(lacking, "MaxCapacity"), std::nullopt) << missing;
        }
    }
    const Dictionary noDesign = registered({energyPack("Full", {{"energy_full_design", ""}})});
    EXPECT_EQ(at(noDesign, "MaxCapacity"), std::nullopt);
    const Dictionary noFull = registered({chargePack("Full", {{"charge_full", ""}})});
    EXPECT_EQ(at(noFull, "DesignCapacity"), std::nullopt);
}

TEST(PowerReading, CapacitiesBeyondAnyNumberAreLeftOut) {
    const std::string most = "9223372036854775807";
    const auto huge =
        chargePack("Discharging", {{"charge_full", most}, {"charge_full_design", most}, {"voltage_min_design", most}});
    const Dictionary keys = PowerReading::of({huge, energyPack("Discharging", {}, "BAT1")}).registry();
    EXPECT_EQ(find(keys, "DesignCapacity"), nullptr);
    EXPECT_EQ(find(keys, "MaxCapacity"), nullptr);
}

TEST(PowerReading, TheHighestTemperatureAndTheMostCyclesCount) {
    const Dictionary keys = registered({energyPack("Full", {{"temp", "291\n"}, {"cycle_count", "700\n"}}),
                                        energyPack("Full", {{"temp", "312\n"}, {"cycle_count", "12\n"}}, "BAT1"),
                                        energyPack("Full", {{"temp", "-2731\n"}, {"cycle_count", "0\n"}}, "BAT2")});
    EXPECT_EQ(at(keys, "Temperature"), Value(3120));
    EXPECT_EQ(at(keys, "CycleCount"), Value(700));
    const Dictionary none = registered({energyPack("Full", {{"cycle_count", "0\n"}})});
    EXPECT_EQ(at(none, "Temperature"), std::nullopt);
    EXPECT_EQ(at(none, "CycleCount"), std::nullopt);
}

TEST(PowerReading, ShowsTheVoltageOfThePackThatWorksHardest) {
    const PowerSupply idle = energyPack("Unknown", {{"voltage_now", "16000000"}, {"power_now", "0"}});
    const PowerSupply working = energyPack("Discharging", {{"voltage_now", "11500000"}}, "BAT1");
    EXPECT_EQ(at(registered({idle, working}), "Voltage"), Value(11'500));
    const PowerSupply resting = energyPack("Unknown", {{"voltage_now", "11500000"}, {"power_now", "0"}}, "BAT1");
    EXPECT_EQ(at(registered({idle, resting}), "Voltage"), Value(16'000));
    const PowerSupply byCurrent = chargePack("Discharging", {{"voltage_now", "8000000"}, {"current_now", "2000000"}});
    EXPECT_EQ(at(registered({byCurrent, working}), "Voltage"), Value(8'000)); // 16 W against 12 W
    EXPECT_EQ(at(registered({energyPack("Full", {{"voltage_now", "999999"}})}), "Voltage"), std::nullopt);
}

TEST(PowerReading, TheCurrentIsSigned) {
    struct Row {
        const char* what;
        Supplies supplies;
        std::optional<Value> amperage;
    };
    const PowerSupply silent = energyPack("Discharging", {{"power_now", ""}}, "BAT1");
    const Row rows[] = {
        {"out, from power", {energyPack("Discharging")}, -1000},
        {"in, from power", {energyPack("Charging")}, 1000},
        {"out, from current", {chargePack("Discharging")}, -1500},
        {"in, from current", {chargePack("Charging")}, 1500},
        {"out, from current where there is power too", {energyPack("Discharging", {{"current_now", "700000"}})}, -700},
        {"a minus while charging", {chargePack("Charging", {{"current_now", "-26000"}})}, -26},
        {"a minus while discharging", {chargePack("Discharging", {{"current_now", "-26000"}})}, -26},
        {"full on mains", {mains(true), chargePack("Full", {{"current_now", "4000"}})}, 4},
        {"unknown on battery", {mains(false), chargePack("Unknown", {{"current_now", "4000"}})}, -4},
        {"nothing flows", {chargePack("Full", {{"current_now", "0"}})}, 0},
        {"no rate", {energyPack("Discharging", {{"power_now", ""}})}, std::nullopt},
        {"beyond belief", {energyPack("Discharging", {{"power_now", "300000001"}})}, std::nullopt},
        {"power without a voltage", {energyPack("Discharging", {{"voltage_now", ""}})}, std::nullopt},
        {"no power without a voltage", {energyPack("Full", {{"voltage_now", ""}, {"power_now", "0"}})}, 0},
        {"two of one voltage", {energyPack("Discharging"), energyPack("Discharging", {}, "BAT1")}, -2000},
        {"one charges the other",
         {energyPack("Discharging", {{"voltage_now", "10000000"}}),
          energyPack("Charging", {{"power_now", "4000000"}}, "BAT1")},
         -800},
        {"one rests and tells no rate",
         {energyPack("Discharging"), energyPack("Unknown", {{"power_now", ""}}, "BAT1")},
         -1000},
        {"one works and tells no rate", {energyPack("Discharging"), silent}, std::nullopt},
        {"none tells a rate",
         {energyPack("Full", {{"power_now", ""}}), energyPack("Full", {{"power_now", ""}}, "BAT1")},
         std::nullopt},
        {"two without voltages",
         {chargePack("Discharging", {{"voltage_now", ""}}), chargePack("Discharging", {{"voltage_now", ""}}, "BAT1")},
         -3000},
        {"two at rest without voltages",
         {energyPack("Full", {{"voltage_now", ""}, {"power_now", "0"}}),
          energyPack("Full", {{"voltage_now", ""}, {"power_now", "0"}}, "BAT1")},
         0},
    };
    for (const Row& row : rows)
        EXPECT_EQ(at(registered(row.supplies), "Amperage"), row.amperage) << row.what;
}

TEST(PowerReading, RegistersTheStrongestAdapter) {
    const PowerSupply charger = usbCharger({{"voltage_max", "20000000\n"}, {"current_max", "3250000\n"}});
    EXPECT_EQ(at(registered({energyPack("Charging"), charger}), "AdapterDetails"), Value(Dictionary{{"Watts", 65}}));
    EXPECT_EQ(at(registered({mains(true), energyPack("Charging")}), "AdapterDetails"), std::nullopt);
}

TEST(PowerReading, TimesFollowWhatFlows) {
    struct Row {
        const char* what;
        Supplies supplies;
        Flow flow;
    };
    const Row rows[] = {
        {"charging", {mains(true), energyPack("Charging")}, Flow::charging},
        {"discharging", {mains(false), energyPack("Discharging")}, Flow::discharging},
        {"drawn from though nobody says so", {mains(false), energyPack("Unknown")}, Flow::discharging},
        {"held", {mains(true), energyPack("Not charging")}, Flow::none},
        {"full", {mains(true), energyPack("Full")}, Flow::none},
        {"drained on mains", {mains(true), energyPack("Discharging")}, Flow::none},
        {"not really charging", {mains(true), energyPack("Charging", {{"power_now", "-1"}})}, Flow::none},
    };
    for (const Row& row : rows)
        EXPECT_EQ(timed(row.supplies).flow, row.flow) << row.what;
}

TEST(PowerReading, TimesRestOnTheSumsOfAllPacks) {
    const PowerSupply idle = energyPack("Unknown", {{"energy_now", "8000000"}, {"power_now", ""}}, "BAT1");
    const TimeEstimate::Reading reading = timed({mains(false), energyPack("Discharging"), idle});
    EXPECT_FALSE(reading.onExternalPower);
    EXPECT_EQ(reading.now, 38'000);
    EXPECT_EQ(reading.rate, -12'000);
    EXPECT_EQ(reading.slowest, 500);
    EXPECT_EQ(reading.remaining, 42'000);
    EXPECT_EQ(reading.full, 80'000);
}

TEST(PowerReading, TimesOfChargeRestOnTheCurrent) {
    const TimeEstimate::Reading reading = timed({mains(true), chargePack("Charging")});
    EXPECT_TRUE(reading.onExternalPower);
    EXPECT_EQ(reading.now, 3'000);
    EXPECT_EQ(reading.rate, 1'500);
    EXPECT_EQ(reading.remaining, 1'000);
    EXPECT_EQ(reading.full, 4'000);
    EXPECT_EQ(reading.slowest, 40); // a hundredth of 4 Ah per hour
}

TEST(PowerReading, TimesHaveNoRateWhereAWorkingPackTellsNone) {
    const PowerSupply silent = energyPack("Discharging", {{"power_now", ""}}, "BAT1");
    EXPECT_EQ(timed({energyPack("Discharging"), silent}).rate, std::nullopt);
    EXPECT_EQ(timed({energyPack("Discharging", {{"power_now", "300000001"}})}).rate, std::nullopt);
}

TEST(PowerReading, ChargingEndsAtTheThreshold) {
    const auto remaining = [](const char* status, const char* now, const char* threshold) {
        return timed({mains(true),
                      energyPack(status, {{"energy_now", now}, {"charge_control_end_threshold", threshold}})})
            .remaining;
    };
    EXPECT_EQ(remaining("Charging", "30000000", ""), 10'000);
    EXPECT_EQ(remaining("Charging", "30000000", "80"), 2'000);
    EXPECT_EQ(remaining("Charging", "30000000", "100"), 10'000);
    EXPECT_EQ(remaining("Charging", "30000000", "0"), 10'000);
    EXPECT_EQ(remaining("Charging", "32000000", "80"), 0);
    EXPECT_EQ(remaining("Charging", "32800000", "80"), 0);     // a little past the threshold
    EXPECT_EQ(remaining("Charging", "32900000", "80"), 7'100); // so far past it that the threshold is ignored
    EXPECT_EQ(remaining("Not charging", "38000000", "80"), 0);
    EXPECT_EQ(remaining("Charging", "41000000", ""), 0);
}

TEST(PowerReading, AFullPackHasNothingLeftToStoreWhateverItHolds) {
    const PowerSupply drifted = energyPack("Full", {{"power_now", "0"}}, "BAT1");
    EXPECT_EQ(timed({mains(true), energyPack("Charging"), drifted}).remaining, 10'000);
}

TEST(PowerReading, TimesTellWhichPacksWereCounted) {
    const std::string one = timed({energyPack("Full")}).batteries;
    EXPECT_EQ(timed({energyPack("Discharging", {{"capacity", "3"}})}).batteries, one);
    EXPECT_NE(timed({energyPack("Full", {}, "BAT1")}).batteries, one);
    EXPECT_NE(timed({chargePack("Full")}).batteries, one);
    EXPECT_NE(timed({energyPack("Full"), energyPack("Full", {}, "BAT1")}).batteries, one);
    EXPECT_EQ(timed({deadPack("BAT1"), energyPack("Full")}).batteries, one);
}

TEST(PowerReading, FailsWhenAPackTellsNothingOrNoneIsLeft) {
    const PowerReading before = PowerReading::of({mains(true), energyPack("Charging")});
    const PowerSupply mute{.name = "BAT0", .attributes = {{"type", "Battery\n"}}};
    const PowerSupply wholly{.name = "BAT0", .attributes = {}};
    const PowerSupply takenOut{.name = "BAT0", .attributes = {{"type", "Battery\n"}, {"present", "0\n"}}};
    const PowerSupply other{.name = "BAT1", .attributes = {{"type", "Battery\n"}}};
    struct Row {
        const char* what;
        Supplies supplies;
        bool fails;
    };
    const Row rows[] = {
        {"reads well", {mains(true), energyPack("Charging")}, false},
        {"tells nothing", {mains(true), mute}, true},
        {"not even its type", {mains(true), wholly}, true},
        {"says that it was taken out", {mains(true), takenOut}, true},
        {"is not there", {mains(true)}, true},
        {"another one tells nothing", {mains(true), energyPack("Charging"), other}, false},
        {"died beside another", {deadPack(), energyPack("Charging", {}, "BAT1")}, false},
        {"has become a mouse's", {{.name = "BAT0", .attributes = {{"type", "Battery"}, {"scope", "Device"}}}}, true},
    };
    for (const Row& row : rows)
        EXPECT_EQ(PowerReading::of(row.supplies).failsAfter(before, row.supplies), row.fails) << row.what;
    EXPECT_FALSE(PowerReading::of({mute}).failsAfter(PowerReading::of({}), {mute}));
    const Supplies oneOfTwo{mute, energyPack("Discharging", {}, "BAT1")};
    const PowerReading both = PowerReading::of({energyPack("Discharging"), energyPack("Discharging", {}, "BAT1")});
    EXPECT_TRUE(PowerReading::of(oneOfTwo).failsAfter(both, oneOfTwo));
    const Supplies oneWithoutType{{.name = "BAT0", .attributes = {}}, energyPack("Discharging", {}, "BAT1")};
    EXPECT_TRUE(PowerReading::of(oneWithoutType).failsAfter(both, oneWithoutType))
        << "its type cannot be read just now";
    const Supplies oneTakenOut{takenOut, energyPack("Discharging", {}, "BAT1")};
    EXPECT_FALSE(PowerReading::of(oneTakenOut).failsAfter(both, oneTakenOut));
}

} // namespace
