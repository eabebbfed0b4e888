// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/BatteryPack.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace {

using Attributes = std::map<std::string, std::string, std::less<>>;
using Status = BatteryPack::Status;
using Unit = BatteryPack::Unit;

/// A laptop's pack, 30 of 40 Wh at 12 V. `attributes` are added or replaced; an empty one removes the attribute.
Attributes energyPack(const Attributes& attributes = {}) {
    Attributes all{{"type", "Battery\n"},        {"status", "Discharging\n"},   {"capacity", "75\n"},
                   {"energy_now", "30000000\n"}, {"energy_full", "40000000\n"}, {"energy_full_design", "50000000\n"},
                   {"power_now", "10000000\n"},  {"voltage_now", "12000000\n"}};
    for (const auto& [key, content] : attributes)
        all.insert_or_assign(key, content);
    return all;
}

/// The same measured as charge: 3 of 4 Ah.
Attributes chargePack(const Attributes& attributes = {}) {
    Attributes all{{"type", "Battery\n"},        {"status", "Discharging\n"},  {"capacity", "75\n"},
                   {"charge_now", "3000000\n"},  {"charge_full", "4000000\n"}, {"charge_full_design", "5000000\n"},
                   {"current_now", "1500000\n"}, {"voltage_now", "12000000\n"}};
    for (const auto& [key, content] : attributes)
        all.insert_or_assign(key, content);
    return all;
}

std::optional<BatteryPack> tryRead(Attributes attributes) {
    return BatteryPack::read({.name = "BAT0", .attributes = std::move(attributes)});
}

BatteryPack read(Attributes attributes) {
    return tryRead(std::move(attributes)).value();
}

TEST(BatteryPack, CountsInMilliUnits) {
    const BatteryPack energy = read(energyPack());
    EXPECT_EQ(energy.device, "BAT0");
    EXPECT_EQ(energy.status, Status::discharging);
    EXPECT_EQ(energy.percent, 75);
    EXPECT_EQ(energy.unit, Unit::energy);
    EXPECT_EQ(energy.now, 30'000);
    EXPECT_EQ(energy.full, 40'000);
    EXPECT_EQ(energy.design, 50'000);
    EXPECT_EQ(energy.power, 10'000);
    EXPECT_EQ(energy.current, std::nullopt);
    EXPECT_EQ(energy.voltage, 12'000);
    EXPECT_FALSE(energy.isDead);

    const BatteryPack charge = read(chargePack());
    EXPECT_EQ(charge.unit, Unit::charge);
    EXPECT_EQ(charge.now, 3'000);
    EXPECT_EQ(charge.full, 4'000);
    EXPECT_EQ(charge.design, 5'000);
    EXPECT_EQ(charge.power, std::nullopt);
    EXPECT_EQ(charge.current, 1'500);
}

TEST(BatteryPack, KnowsTheKernelsWordsForItsStatus) {
    struct Row {
        const char* content;
        Status status;
    };
    const Row rows[] = {{"Unknown\n", Status::unknown},
                        {"Charging\n", Status::charging},
                        {"Discharging\n", Status::discharging},
                        {"Not charging\n", Status::notCharging},
                        {"Full\n", Status::full},
                        {"full\n", Status::unknown},
                        {"", Status::unknown}};
    for (const Row& row : rows) {
        const BatteryPack pack = read(energyPack({{"status", row.content}}));
        EXPECT_EQ(pack.status, row.status) << row.content;
        EXPECT_EQ(pack.isActive(), row.status == Status::charging || row.status == Status::discharging) << row.content;
    }
}

TEST(BatteryPack, IsNamedByItsModelOrElseByItsDevice) {
    EXPECT_EQ(read(energyPack({{"model_name", " 45N1 173 \n"}})).name, "45N1 173");
    EXPECT_EQ(read(energyPack({{"model_name", "  \n"}})).name, "BAT0");
    EXPECT_EQ(read(energyPack({{"model_name", "Akku \xE4\n"}})).name, "BAT0");
    EXPECT_EQ(read(energyPack()).name, "BAT0");
}

TEST(BatteryPack, ThePercentageIsTheKernelsOrElseTheRatio) {
    struct Row {
        const char* capacity;
        const char* now;
        double percent;
    };
    const Row rows[] = {
        {"0", "30000000", 0},
        {"74", "30000000", 74},
        {"100", "30000000", 100},
        {"102", "30000000", 100},
        {"106", "30000000", 100},
        {"-1", "30000000", 75},
        {"", "30000000", 75},
        {"n/a", "30000000", 75},
        {"", "45000000", 100},
        {"", "-1000000", 0},
        {"", "0", 0},
        {"", "30100000", 75.25},
    };
    for (const Row& row : rows) {
        const BatteryPack pack = read(energyPack({{"capacity", row.capacity}, {"energy_now", row.now}}));
        EXPECT_DOUBLE_EQ(pack.percent, row.percent) << row.capacity << ", " << row.now;
    }
}

TEST(BatteryPack, CannotBeReadWhereNothingTellsItsCharge) {
    EXPECT_FALSE(tryRead({{"type", "Battery\n"}}));
    EXPECT_FALSE(tryRead(energyPack({{"capacity", ""}, {"energy_now", ""}})));
    EXPECT_FALSE(tryRead(energyPack({{"capacity", ""}, {"energy_full", "0\n"}})));
    EXPECT_FALSE(tryRead(energyPack({{"capacity", ""}, {"energy_full", "-1\n"}})));
    EXPECT_FALSE(tryRead(energyPack({{"capacity", ""}, {"energy_full", "n/a\n"}})));
    EXPECT_TRUE(tryRead({{"type", "Battery\n"}, {"capacity", "40\n"}}));
}

TEST(BatteryPack, CountsInEnergyWhereBothUnitsAreThere) {
    Attributes both = energyPack();
    both.merge(chargePack());
    EXPECT_EQ(read(both).unit, Unit::energy);
    EXPECT_EQ(read(both).full, 40'000);
    for (const char* missing : {"energy_now", "energy_full"}) {
        Attributes half = both;
        half.insert_or_assign(missing, "");
        EXPECT_EQ(read(half).unit, Unit::charge) << missing;
        EXPECT_EQ(read(half).now, 3'000) << missing;
        EXPECT_EQ(read(half).full, 4'000) << missing;
    }
    Attributes zero = both;
    zero.insert_or_assign("energy_full", "0\n");
    EXPECT_EQ(read(zero).unit, Unit::charge);
}

TEST(BatteryPack, NeverMixesTheUnits) {
    // One driver has energy_now and charge_full, and neither's partner.
    const BatteryPack pack = read({{"type", "Battery\n"},
                                   {"capacity", "80\n"},
                                   {"energy_now", "60000000\n"},
                                   {"charge_full", "5000000\n"},
                                   {"charge_full_design", "6000000\n"}});
    EXPECT_EQ(pack.percent, 80);
    EXPECT_EQ(pack.unit, Unit::charge);
    EXPECT_EQ(pack.full, 5'000);
    EXPECT_EQ(pack.now, 4'000);
    EXPECT_FALSE(tryRead({{"type", "Battery\n"}, {"energy_now", "60000000\n"}, {"charge_full", "5000000\n"}}));
    const BatteryPack other =
        read({{"type", "Battery\n"}, {"capacity", "80\n"}, {"charge_now", "4000000\n"}, {"energy_full", "60000000\n"}});
    EXPECT_EQ(other.unit, Unit::energy);
    EXPECT_EQ(other.now, 48'000);
}

TEST(BatteryPack, TakesTheAverageWhereTheMomentaryValueIsMissing) {
    EXPECT_EQ(read(energyPack({{"energy_now", ""}, {"energy_avg", "28000000\n"}})).now, 28'000);
    EXPECT_EQ(read(energyPack({{"energy_avg", "28000000\n"}})).now, 30'000);
    EXPECT_EQ(read(energyPack({{"power_now", ""}, {"power_avg", "9000000\n"}})).power, 9'000);
    EXPECT_EQ(read(chargePack({{"charge_now", ""}, {"charge_avg", "2800000\n"}})).now, 2'800);
    EXPECT_EQ(read(chargePack({{"current_now", ""}, {"current_avg", "1400000\n"}})).current, 1'400);
    EXPECT_EQ(read(chargePack({{"current_now", "0\n"}, {"current_avg", "1400000\n"}})).current, 0);
}

TEST(BatteryPack, FullAndDesignOfNothingAreUnknown) {
    for (const char* content : {"", "0\n", "-1\n", "n/a\n"}) {
        EXPECT_EQ(read(energyPack({{"energy_full_design", content}})).design, std::nullopt) << content;
        const BatteryPack pack = read(energyPack({{"energy_full", content}}));
        EXPECT_EQ(pack.full, std::nullopt) << content;
        EXPECT_EQ(pack.now, std::nullopt) << content;
        EXPECT_EQ(pack.percent, 75) << content;
    }
}

TEST(BatteryPack, WorksOutWhatIsStoredWhereThatCannotBeTrue) {
    struct Row {
        const char* now;
        double stored;
    };
    const Row rows[] = {{"30000000", 30'000}, {"40000000", 40'000},  {"48000000", 48'000},
                        {"48000001", 30'000}, {"480000000", 30'000}, {"-1", 30'000},
                        {"", 30'000},         {"n/a", 30'000},       {"0", 0}};
    for (const Row& row : rows)
        EXPECT_EQ(read(energyPack({{"energy_now", row.now}})).now, row.stored) << row.now;
}

TEST(BatteryPack, SeesThroughMilliUnits) {
    const BatteryPack charge = read({{"type", "Battery\n"},
                                     {"status", "Discharging\n"},
                                     {"capacity", "50\n"},
                                     {"charge_now", "3500\n"},
                                     {"charge_full", "7000\n"},
                                     {"charge_full_design", "7326\n"},
                                     {"current_now", "1200\n"},
                                     {"voltage_now", "12575\n"}});
    EXPECT_EQ(charge.now, 3'500);
    EXPECT_EQ(charge.full, 7'000);
    EXPECT_EQ(charge.design, 7'326);
    EXPECT_EQ(charge.current, 1'200);
    EXPECT_EQ(charge.voltage, std::nullopt);
    const BatteryPack energy = read(energyPack(
        {{"energy_now", "30000"}, {"energy_full", "40000"}, {"energy_full_design", "50000"}, {"power_now", "10000"}}));
    EXPECT_EQ(energy.now, 30'000);
    EXPECT_EQ(energy.full, 40'000);
    EXPECT_EQ(energy.design, 50'000);
    EXPECT_EQ(energy.power, 10'000);
}

TEST(BatteryPack, TakesUnitsForWhatTheyAreWhereACapacityIsLargeEnough) {
    struct Row {
        const char* full;
        const char* design;
        double read;
    };
    const Row energyRows[] = {{"1000000", "", 1'000}, {"999999", "", 999'999}, {"999999", "1000000", 999.999}};
    for (const Row& row : energyRows) {
        const BatteryPack pack = read(energyPack({{"energy_full", row.full}, {"energy_full_design", row.design}}));
        EXPECT_DOUBLE_EQ(pack.full.value(), row.read) << row.full << ", " << row.design;
    }
    const Row chargeRows[] = {{"100000", "", 100}, {"99999", "", 99'999}, {"99999", "100000", 99.999}};
    for (const Row& row : chargeRows) {
        const BatteryPack pack = read(chargePack({{"charge_full", row.full}, {"charge_full_design", row.design}}));
        EXPECT_DOUBLE_EQ(pack.full.value(), row.read) << row.full << ", " << row.design;
    }
    // A worn pack with a correct design capacity is left alone.
    EXPECT_EQ(read(energyPack({{"energy_full", "500000"}, {"energy_now", "250000"}})).full, 500);
}

TEST(BatteryPack, VoltagesBelowOneVoltAreUnknown) {
    EXPECT_EQ(read(energyPack({{"voltage_now", "1000000\n"}})).voltage, 1'000);
    EXPECT_EQ(read(energyPack({{"voltage_now", "999999\n"}})).voltage, std::nullopt);
    EXPECT_EQ(read(energyPack({{"voltage_now", "0\n"}})).voltage, std::nullopt);
    EXPECT_EQ(read(energyPack({{"voltage_min_design", "11100000\n"}})).nominalVoltage, 11'100);
    EXPECT_EQ(read(energyPack({{"voltage_min_design", "11100\n"}})).nominalVoltage, std::nullopt);
}

TEST(BatteryPack, TemperaturesThatNoBatteryHasAreUnknown) {
    struct Row {
        const char* content;
        std::optional<double> hundredths;
    };
    const Row rows[] = {{"305\n", 3'050},         {"0\n", 0},       {"-50\n", -500},          {"-199\n", -1'990},
                        {"-200\n", std::nullopt}, {"999\n", 9'990}, {"1000\n", std::nullopt}, {"-2731\n", std::nullopt},
                        {"", std::nullopt}};
    for (const Row& row : rows)
        EXPECT_EQ(read(energyPack({{"temp", row.content}})).temperature, row.hundredths) << row.content;
}

TEST(BatteryPack, CyclesCountFromOneOn) {
    EXPECT_EQ(read(energyPack({{"cycle_count", "1\n"}})).cycleCount, 1);
    EXPECT_EQ(read(energyPack({{"cycle_count", "312\n"}})).cycleCount, 312);
    for (const char* content : {"0\n", "-1\n", "", "n/a\n"})
        EXPECT_EQ(read(energyPack({{"cycle_count", content}})).cycleCount, std::nullopt) << content;
}

TEST(BatteryPack, AChargeLimitLiesBetweenOneAndAHundred) {
    const auto limit = [](const char* content) {
        const BatteryPack pack = read(energyPack({{"charge_control_end_threshold", content}}));
        EXPECT_TRUE(pack.tellsLimit) << content;
        return pack.limit;
    };
    EXPECT_EQ(limit("80\n"), 80);
    EXPECT_EQ(limit("1\n"), 1);
    EXPECT_EQ(limit("100\n"), 100);
    for (const char* content :
         {"0\n", "101\n", "255\n", "-80\n", "80.5\n", "80 %\n", "0x50\n", "99999999999999999999\n", "", "n/a\n"})
        EXPECT_EQ(limit(content), std::nullopt) << content;
    EXPECT_FALSE(read(energyPack({{"charge_control_start_threshold", "75\n"}})).tellsLimit);
}

TEST(BatteryPack, IsDeadWithoutVoltageAndCharge) {
    struct Row {
        const char* what;
        Attributes attributes;
        bool isDead;
    };
    const Row rows[] = {
        {"0 V and 0 Wh", energyPack({{"voltage_now", "0\n"}, {"energy_now", "0\n"}, {"capacity", "0\n"}}), true},
        {"0 V and 0 Wh that claim to be full",
         energyPack({{"voltage_now", "0\n"}, {"energy_now", "0\n"}, {"capacity", "100\n"}}), true},
        {"0 V, and no number but the percentage", {{"voltage_now", "0\n"}, {"capacity", "0\n"}}, true},
        {"0 V, and a percentage alone", {{"voltage_now", "0\n"}, {"capacity", "60\n"}}, false},
        {"0 V and a charge", energyPack({{"voltage_now", "0\n"}}), false},
        {"empty", energyPack({{"energy_now", "0\n"}, {"capacity", "0\n"}}), false},
        {"empty, voltage unknown", energyPack({{"voltage_now", ""}, {"energy_now", "0\n"}, {"capacity", "0\n"}}),
         false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(read(row.attributes).isDead, row.isDead) << row.what;
}

TEST(BatteryPack, ThatHoldsNothingAndCanHoldNothingIsDeadWhateverItClaims) {
    const Attributes claim{{"voltage_now", "0\n"}, {"capacity", "100\n"}};
    Attributes energy{{"energy_now", "0\n"}, {"energy_full", "0\n"}};
    energy.insert(claim.begin(), claim.end());
    EXPECT_TRUE(read(energyPack(energy)).isDead);
    Attributes charge{{"charge_now", "0\n"}, {"charge_full", "0\n"}};
    charge.insert(claim.begin(), claim.end());
    EXPECT_TRUE(read(chargePack(charge)).isDead);
}

TEST(BatteryPack, HasNoRateAbove300Watts) {
    EXPECT_EQ(read(energyPack({{"power_now", "300000000\n"}})).power, 300'000);
    EXPECT_EQ(read(energyPack({{"power_now", "300000001\n"}})).power, std::nullopt);
    EXPECT_EQ(read(energyPack({{"power_now", "-300000000\n"}})).power, -300'000);
    EXPECT_EQ(read(energyPack({{"power_now", "-300000001\n"}})).power, std::nullopt);
    EXPECT_EQ(read(chargePack({{"current_now", "25000000\n"}})).current, 25'000);
    EXPECT_EQ(read(chargePack({{"current_now", "25000001\n"}})).current, std::nullopt);
    EXPECT_EQ(read(chargePack({{"current_now", "-25000001\n"}})).current, std::nullopt);
    EXPECT_EQ(read(energyPack({{"power_now", ""}})).power, std::nullopt);
}

TEST(BatteryPack, HasNoCurrentThatWouldBeMoreThan300WattsAtAnyVoltage) {
    EXPECT_EQ(read(chargePack({{"voltage_now", ""}, {"current_now", "300000000\n"}})).current, 300'000);
    EXPECT_EQ(read(chargePack({{"voltage_now", ""}, {"current_now", "300000001\n"}})).current, std::nullopt);
    EXPECT_EQ(read(chargePack({{"voltage_now", ""}, {"current_now", "-9223372036854775808\n"}})).current, std::nullopt);
}

TEST(BatteryPack, AMinusMeansOutAndElseTheStatusTellsTheDirection) {
    struct Row {
        const char* status;
        const char* power;
        bool onExternalPower;
        int direction;
    };
    const Row rows[] = {
        {"Charging", "5000000", true, 1},
        {"Charging", "5000000", false, 1},
        {"Charging", "-5000000", true, -1},
        {"Discharging", "5000000", false, -1},
        {"Discharging", "5000000", true, -1},
        {"Discharging", "-5000000", true, -1},
        {"Full", "5000000", true, 1},
        {"Full", "5000000", false, -1},
        {"Full", "-5000000", true, -1},
        {"Not charging", "5000000", true, 1},
        {"Unknown", "5000000", true, 1},
        {"Unknown", "5000000", false, -1},
        {"Unknown", "-5000000", true, -1},
        {"Charging", "0", true, 1},
        {"Charging", "", true, 1},
    };
    for (const Row& row : rows) {
        const BatteryPack pack = read(energyPack({{"status", row.status}, {"power_now", row.power}}));
        EXPECT_EQ(pack.direction(row.onExternalPower), row.direction) << row.status << ", " << row.power;
    }
    EXPECT_EQ(read(chargePack({{"status", "Charging"}, {"current_now", "-5000000"}})).direction(true), -1);
    EXPECT_TRUE(read(chargePack({{"current_now", "-1"}})).reportsOutflow());
    EXPECT_TRUE(read(energyPack({{"power_now", "-1"}})).reportsOutflow());
    EXPECT_FALSE(read(energyPack({{"power_now", "0"}})).reportsOutflow());
}

TEST(BatteryPack, PowerAndCurrentFollowFromEachOther) {
    const BatteryPack energy = read(energyPack());
    EXPECT_DOUBLE_EQ(energy.signedPower(false).value(), -10'000);
    EXPECT_DOUBLE_EQ(energy.signedCurrent(false).value(), -10'000 / 12.0);
    const BatteryPack charge = read(chargePack());
    EXPECT_DOUBLE_EQ(charge.signedCurrent(false).value(), -1'500);
    EXPECT_DOUBLE_EQ(charge.signedPower(false).value(), -18'000);
    const BatteryPack both = read(energyPack({{"current_now", "700000\n"}, {"status", "Charging\n"}}));
    EXPECT_DOUBLE_EQ(both.signedPower(true).value(), 10'000);
    EXPECT_DOUBLE_EQ(both.signedCurrent(true).value(), 700);
    const BatteryPack negative = read(energyPack({{"power_now", "-10000000\n"}, {"current_now", "700000\n"}}));
    EXPECT_DOUBLE_EQ(negative.signedCurrent(true).value(), -700);
}

TEST(BatteryPack, ARateThatIsAlwaysNothingYieldsToTheOtherOne) {
    const BatteryPack byCurrent = read(energyPack({{"power_now", "0\n"}, {"current_now", "700000\n"}}));
    EXPECT_EQ(byCurrent.power, std::nullopt);
    EXPECT_DOUBLE_EQ(byCurrent.signedPower(false).value(), -8'400);
    const BatteryPack byPower = read(chargePack({{"current_now", "0\n"}, {"power_now", "12000000\n"}}));
    EXPECT_EQ(byPower.current, std::nullopt);
    EXPECT_DOUBLE_EQ(byPower.signedCurrent(false).value(), -1'000);
    const BatteryPack atRest = read(energyPack({{"power_now", "0\n"}, {"current_now", "0\n"}}));
    EXPECT_EQ(atRest.power, 0);
    EXPECT_EQ(atRest.current, 0);
    EXPECT_EQ(read(energyPack({{"power_now", "0\n"}})).power, 0);
    EXPECT_EQ(read(chargePack({{"current_now", "0\n"}})).current, 0);
}

TEST(BatteryPack, HasNoRateWhereTheFirmwareTellsNone) {
    const BatteryPack pack = read(energyPack({{"power_now", ""}}));
    EXPECT_EQ(pack.signedPower(true), std::nullopt);
    EXPECT_EQ(pack.signedCurrent(true), std::nullopt);
}

TEST(BatteryPack, NeedsAVoltageToTurnOneRateIntoTheOtherUnlessItIsNothing) {
    const BatteryPack energy = read(energyPack({{"voltage_now", ""}}));
    EXPECT_DOUBLE_EQ(energy.signedPower(false).value(), -10'000);
    EXPECT_EQ(energy.signedCurrent(false), std::nullopt);
    EXPECT_EQ(read(energyPack({{"voltage_now", ""}, {"power_now", "0"}})).signedCurrent(false), 0);
    const BatteryPack charge = read(chargePack({{"voltage_now", ""}}));
    EXPECT_DOUBLE_EQ(charge.signedCurrent(false).value(), -1'500);
    EXPECT_EQ(charge.signedPower(false), std::nullopt);
    EXPECT_EQ(read(chargePack({{"voltage_now", ""}, {"current_now", "0"}})).signedPower(false), 0);
}

TEST(BatteryPack, ChargeBecomesEnergyAtTheNominalVoltage) {
    const BatteryPack pack = read(chargePack({{"voltage_min_design", "11000000\n"}})).inEnergy();
    EXPECT_EQ(pack.unit, Unit::energy);
    EXPECT_DOUBLE_EQ(pack.now.value(), 33'000);
    EXPECT_DOUBLE_EQ(pack.full.value(), 44'000);
    EXPECT_DOUBLE_EQ(pack.design.value(), 55'000);
    EXPECT_EQ(pack.percent, 75);
    EXPECT_EQ(pack.current, 1'500);
}

TEST(BatteryPack, ChargeBecomesEnergyAtThePresentVoltageWhereNoOtherIsKnown) {
    EXPECT_DOUBLE_EQ(read(chargePack()).inEnergy().full.value(), 48'000);
    const BatteryPack without = read(chargePack({{"voltage_now", ""}})).inEnergy();
    EXPECT_EQ(without.unit, Unit::charge);
    EXPECT_EQ(without.full, 4'000);
    const BatteryPack energy = read(energyPack({{"voltage_min_design", "11000000\n"}})).inEnergy();
    EXPECT_EQ(energy.full, 40'000);
    const BatteryPack noDesign = read(chargePack({{"charge_full_design", ""}})).inEnergy();
    EXPECT_EQ(noDesign.design, std::nullopt);
}

} // namespace
