// SPDX-License-Identifier: GPL-3.0-or-later
#include "battery/BatteryReader.h"

#include "support/FakePowerSaving.h"
#include "support/FakePowerSources.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

/// A value of every kind, to be put where another kind is expected.
const std::vector<std::pair<const char*, Value>> everyKind{
    {"text", "40"},
    {"boolean", true},
    {"integer", 40},
    {"real", 40.5},
    {"dictionary", Dictionary{{"Watts", 40}}},
    {"not a number", std::numeric_limits<double>::quiet_NaN()},
    {"infinity", std::numeric_limits<double>::infinity()},
};

Dictionary fullDescription() {
    return {
        {"Type", "InternalBattery"},
        {"Is Present", true},
        {"Current Capacity", 60},
        {"Max Capacity", 100},
        {"Is Charging", true},
        {"Is Charged", true},
        {"Name", "Cell"},
        {"Power Source State", "AC Power"},
        {"Time to Full Charge", 30},
        {"Time to Empty", 90},
    };
}

Dictionary fullRegistry() {
    return {
        {"CycleCount", 312},
        {"DesignCapacity", 5000},
        {"AppleRawMaxCapacity", 4400},
        {"Temperature", 3055},
        {"Voltage", 12'345},
        {"Amperage", -1234},
        {"AdapterDetails", Dictionary{{"Watts", 65}}},
    };
}

struct BatteryReaderTest : ::testing::Test {
    FakePowerSources sources;
    FakePowerSaving powerSaving;
    BatteryReader reader{sources, powerSaving};

    BatteryReaderTest() { sources.registry = Value(Dictionary()); }

    BatteryState read(Dictionary description) {
        sources.sources = std::vector<std::optional<Value>>{Value(std::move(description))};
        return reader.read();
    }
    BatteryState readWith(const char* key, Value value) {
        Dictionary description = fullDescription();
        description.insert_or_assign(key, std::move(value));
        return read(std::move(description));
    }
    BatteryState readWithout(const char* key) {
        Dictionary description = fullDescription();
        description.erase(key);
        return read(std::move(description));
    }
    BatteryState readRegistry(Dictionary registry) {
        sources.registry = Value(std::move(registry));
        return read(fullDescription());
    }
};

TEST_F(BatteryReaderTest, FillsEveryFieldFromWhatTheSystemTells) {
    BatteryState expected;
    expected.hasBattery = true;
    expected.percent = 60;
    expected.isCharging = true;
    expected.isCharged = true;
    expected.pluggedIn = true;
    expected.sourceName = "Cell";
    expected.minutesToFull = 30;
    expected.minutesToEmpty = 90;
    expected.cycleCount = 312;
    expected.designCapacity = 5000;
    expected.fullCapacity = 4400;
    expected.temperatureC = 30.55;
    expected.voltage = 12.345;
    expected.amperage = -1.234;
    expected.adapterWatts = 65;
    expected.lowPowerMode = true;
    powerSaving.lowPowerMode = true;
    EXPECT_EQ(readRegistry(fullRegistry()), expected);
}

TEST_F(BatteryReaderTest, KeepsNothingFromTheReadingBefore) {
    powerSaving.lowPowerMode = true;
    readRegistry(fullRegistry());
    powerSaving.lowPowerMode = false;
    sources.sources.reset();
    EXPECT_EQ(reader.read(), BatteryState());
}

TEST_F(BatteryReaderTest, FindsNoBatteryWhereThereIsNoUsableDescription) {
    const std::optional<std::vector<std::optional<Value>>> lists[] = {
        std::nullopt,
        std::vector<std::optional<Value>>{},
        std::vector<std::optional<Value>>{std::nullopt},
        std::vector<std::optional<Value>>{Value("InternalBattery")},
        std::vector<std::optional<Value>>{Value(Dictionary())},
    };
    sources.registry = Value(fullRegistry());
    for (const auto& list : lists) {
        sources.sources = list;
        EXPECT_EQ(reader.read(), BatteryState()) << &list - lists;
    }
    EXPECT_EQ(sources.registryReads, 0);
}

TEST_F(BatteryReaderTest, TellsTheLowPowerModeWithoutABatteryToo) {
    powerSaving.lowPowerMode = true;
    BatteryState expected;
    expected.lowPowerMode = true;
    EXPECT_EQ(reader.read(), expected);
}

TEST_F(BatteryReaderTest, PassesOverEverySourceThatIsNoUsableBattery) {
    Dictionary ups = fullDescription();
    ups.insert_or_assign("Type", "UPS");
    ups.insert_or_assign("Name", "UPS");
    Dictionary absent = fullDescription();
    absent.insert_or_assign("Is Present", false);
    Dictionary empty = fullDescription();
    empty.insert_or_assign("Max Capacity", 0);
    Dictionary other = fullDescription();
    other.insert_or_assign("Name", "Second");
    sources.sources = std::vector<std::optional<Value>>{Value(ups),
                                                        std::nullopt,
                                                        Value("text"),
                                                        Value(absent),
                                                        Value(empty),
                                                        Value(Dictionary()),
                                                        Value(fullDescription()),
                                                        Value(other)};
    const BatteryState state = reader.read();
    EXPECT_TRUE(state.hasBattery);
    EXPECT_EQ(state.sourceName, "Cell");
}

TEST_F(BatteryReaderTest, DoesNotLookUpTheRegistryWhenTheBatteryIsNotPresent) {
    sources.registry = Value(fullRegistry());
    EXPECT_EQ(readWith("Is Present", false), BatteryState());
    EXPECT_EQ(sources.registryReads, 0);
    EXPECT_TRUE(readWith("Is Present", true).hasBattery);
    EXPECT_EQ(sources.registryReads, 1);
}

TEST_F(BatteryReaderTest, TakesASourceForPresentUnlessItClearlySaysOtherwise) {
    EXPECT_TRUE(readWithout("Is Present").hasBattery);
    for (const auto& [kind, value] : everyKind)
        EXPECT_TRUE(readWith("Is Present", value).hasBattery) << kind;
    EXPECT_TRUE(readWith("Is Present", 0).hasBattery);
}

TEST_F(BatteryReaderTest, NeedsTheTypeAndBothCapacities) {
    for (const char* key : {"Type", "Current Capacity", "Max Capacity"})
        EXPECT_EQ(readWithout(key), BatteryState()) << key;
    for (const auto& [kind, value] : everyKind) {
        const bool isNumber = value.number().has_value();
        EXPECT_EQ(readWith("Type", value), BatteryState()) << kind;
        EXPECT_EQ(readWith("Current Capacity", value).hasBattery, isNumber) << kind;
        EXPECT_EQ(readWith("Max Capacity", value).hasBattery, isNumber) << kind;
    }
    EXPECT_FALSE(readWith("Type", "internalbattery").hasBattery);
    EXPECT_FALSE(readWith("Max Capacity", 0).hasBattery);
    EXPECT_FALSE(readWith("Max Capacity", -100).hasBattery);
    EXPECT_TRUE(readWith("Max Capacity", 0.001).hasBattery);
}

TEST_F(BatteryReaderTest, RoundsThePercentageHalfUpAndKeepsItInRange) {
    struct Row {
        Value current;
        Value max;
        std::int64_t percent;
    };
    const Row rows[] = {
        {50, 99, 51}, {99.5, 100, 100}, {99.4, 100, 99}, {120, 100, 100},      {0, 100, 0},
        {-3, 100, 0}, {0.5, 100, 1},    {0.4, 100, 0},   {31'415, 50'000, 63}, {1, 3, 33},
        {2, 3, 67},   {1, 1e-300, 100}, {12.5, 100, 13}, {100.4, 100, 100},    {-1e300, 100, 0},
    };
    for (const Row& row : rows) {
        Dictionary description = fullDescription();
        description.insert_or_assign("Current Capacity", row.current);
        description.insert_or_assign("Max Capacity", row.max);
        EXPECT_EQ(read(description).percent, row.percent) << *row.current.number() << " of " << *row.max.number();
    }
}

TEST_F(BatteryReaderTest, FlagsAreOnlyTrueWhenTheyAreBooleans) {
    EXPECT_FALSE(readWithout("Is Charging").isCharging);
    EXPECT_FALSE(readWithout("Is Charged").isCharged);
    for (const auto& [kind, value] : everyKind) {
        const bool isBoolean = value.boolean().has_value();
        EXPECT_EQ(readWith("Is Charging", value).isCharging, isBoolean) << kind;
        EXPECT_EQ(readWith("Is Charged", value).isCharged, isBoolean) << kind;
    }
    EXPECT_FALSE(readWith("Is Charging", 1).isCharging);
    EXPECT_FALSE(readWith("Is Charging", false).isCharging);
    EXPECT_FALSE(readWith("Is Charged", false).isCharged);
}

TEST_F(BatteryReaderTest, IsPluggedInOnlyOnAcPower) {
    EXPECT_TRUE(readWith("Power Source State", "AC Power").pluggedIn);
    for (const char* state : {"Battery Power", "Off Line", "ac power", "AC Power ", ""})
        EXPECT_FALSE(readWith("Power Source State", state).pluggedIn) << state;
    EXPECT_FALSE(readWithout("Power Source State").pluggedIn);
    for (const auto& [kind, value] : everyKind)
        EXPECT_FALSE(readWith("Power Source State", value).pluggedIn) << kind;
}

TEST_F(BatteryReaderTest, TakesTheNameWhenItIsText) {
    EXPECT_EQ(readWithout("Name").sourceName, std::nullopt);
    EXPECT_EQ(readWith("Name", "").sourceName, "");
    for (const auto& [kind, value] : everyKind)
        EXPECT_EQ(readWith("Name", value).sourceName.has_value(), value.text() != nullptr) << kind;
}

TEST_F(BatteryReaderTest, TakesTimesThatAreNotNegative) {
    struct Row {
        Value value;
        std::optional<std::int64_t> minutes;
    };
    const Row rows[] = {
        {-1, std::nullopt},
        {0, 0},
        {1, 1},
        {2880, 2880},
        {61.9, 61},
        {-1.5, std::nullopt},
        {"30", std::nullopt},
        {true, std::nullopt},
        {1e300, std::nullopt},
        {std::numeric_limits<double>::quiet_NaN(), std::nullopt},
        {Dictionary(), std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(readWith("Time to Empty", row.value).minutesToEmpty, row.minutes) << &row - rows;
        EXPECT_EQ(readWith("Time to Empty", row.value).minutesToFull, 30);
        EXPECT_EQ(readWith("Time to Full Charge", row.value).minutesToFull, row.minutes) << &row - rows;
        EXPECT_EQ(readWith("Time to Full Charge", row.value).minutesToEmpty, 90);
    }
    EXPECT_EQ(readWithout("Time to Empty").minutesToEmpty, std::nullopt);
    EXPECT_EQ(readWithout("Time to Full Charge").minutesToFull, std::nullopt);
}

TEST_F(BatteryReaderTest, DoesWithoutARegistry) {
    const BatteryState bare = readRegistry({});
    EXPECT_TRUE(bare.hasBattery);
    sources.registry.reset();
    EXPECT_EQ(read(fullDescription()), bare);
    sources.registry = Value("no dictionary");
    EXPECT_EQ(read(fullDescription()), bare);
    sources.hasRegistry = false;
    EXPECT_EQ(read(fullDescription()), bare);
}

TEST_F(BatteryReaderTest, IgnoresRegistryValuesOfAnotherKind) {
    const BatteryState bare = readRegistry({});
    for (const char* key : {"CycleCount", "DesignCapacity", "Temperature", "Voltage", "Amperage", "InstantAmperage"}) {
        for (const auto& [kind, value] : everyKind) {
            const bool isNumber = value.number().has_value();
            EXPECT_EQ(readRegistry({{key, value}}) == bare, !isNumber) << key << " as " << kind;
        }
    }
    for (const auto& [kind, value] : everyKind) {
        EXPECT_EQ(readRegistry({{"AdapterDetails", value}}) == bare, value.dictionary() == nullptr) << kind;
        EXPECT_EQ(readRegistry({{"AdapterDetails", Dictionary{{"Watts", value}}}}) == bare, !value.number()) << kind;
    }
    for (const char* key : {"AppleRawMaxCapacity", "NominalChargeCapacity", "MaxCapacity"}) {
        for (const auto& [kind, value] : everyKind) {
            const BatteryState state = readRegistry({{"DesignCapacity", 50}, {key, value}});
            EXPECT_EQ(state.fullCapacity.has_value(), value.number().has_value()) << key << " as " << kind;
        }
    }
}

TEST_F(BatteryReaderTest, AcceptsCycleCountsFromZeroOn) {
    EXPECT_EQ(readRegistry({{"CycleCount", 0}}).cycleCount, 0);
    EXPECT_EQ(readRegistry({{"CycleCount", -1}}).cycleCount, std::nullopt);
}

TEST_F(BatteryReaderTest, AcceptsTemperaturesInsideItsLimits) {
    struct Row {
        int hundredths;
        std::optional<double> celsius;
    };
    const Row rows[] = {{3055, 30.55},          {0, 0.0},      {-1999, -19.99},
                        {-2000, std::nullopt},  {9999, 99.99}, {10'000, std::nullopt},
                        {-27'000, std::nullopt}};
    for (const Row& row : rows)
        EXPECT_EQ(readRegistry({{"Temperature", row.hundredths}}).temperatureC, row.celsius) << row.hundredths;
}

TEST_F(BatteryReaderTest, AcceptsPositiveVoltages) {
    EXPECT_EQ(readRegistry({{"Voltage", 12'345}}).voltage, 12.345);
    EXPECT_EQ(readRegistry({{"Voltage", 1}}).voltage, 0.001);
    EXPECT_EQ(readRegistry({{"Voltage", 0}}).voltage, std::nullopt);
    EXPECT_EQ(readRegistry({{"Voltage", -12'345}}).voltage, std::nullopt);
}

TEST_F(BatteryReaderTest, TakesTheSmoothedCurrentBeforeTheInstantOne) {
    EXPECT_EQ(readRegistry({{"Amperage", 0}, {"InstantAmperage", 500}}).amperage, 0.0);
    EXPECT_EQ(readRegistry({{"Amperage", 1500}}).amperage, 1.5);
    EXPECT_EQ(readRegistry({{"InstantAmperage", -1234}}).amperage, -1.234);
    EXPECT_EQ(readRegistry({{"Amperage", "1"}, {"InstantAmperage", -1234}}).amperage, -1.234);
}

TEST_F(BatteryReaderTest, AcceptsAdaptersFromOneWattOn) {
    const auto wattsOf = [this](Dictionary details) {
        return readRegistry({{"AdapterDetails", std::move(details)}}).adapterWatts;
    };
    EXPECT_EQ(wattsOf({{"Watts", 65}}), 65);
    EXPECT_EQ(wattsOf({{"Watts", 1}}), 1);
    EXPECT_EQ(wattsOf({{"Watts", 0}}), std::nullopt);
    EXPECT_EQ(wattsOf({{"Watts", -5}}), std::nullopt);
    EXPECT_EQ(wattsOf({}), std::nullopt);
}

TEST_F(BatteryReaderTest, AcceptsADesignCapacityAboveZeroAndAFullOneOnlyWithIt) {
    EXPECT_EQ(readRegistry({{"DesignCapacity", 1}}).designCapacity, 1);
    for (const int design : {0, -5000}) {
        const BatteryState state = readRegistry({{"DesignCapacity", design}, {"MaxCapacity", 0}});
        EXPECT_EQ(state.designCapacity, std::nullopt);
        EXPECT_EQ(state.fullCapacity, std::nullopt);
    }
    EXPECT_EQ(readRegistry({{"MaxCapacity", 4400}}).fullCapacity, std::nullopt);
}

TEST_F(BatteryReaderTest, TakesTheFirstFullCapacityThatFitsTheDesign) {
    struct Row {
        Value raw;
        Value nominal;
        Value max;
        std::optional<std::int64_t> fullCapacity;
    };
    const Row rows[] = {
        {4600, 4500, 4400, 4600},   {100, 4400, 4300, 4400},  {100, 100, 4400, 4400},     {100, 100, 100, std::nullopt},
        {"4600", 4500, 4400, 4500}, {"a", true, 4400, 4400},  {1500, 4500, 4400, 1500},   {1499, 4500, 4400, 4500},
        {6500, 4500, 4400, 6500},   {6501, 4500, 4400, 4500}, {0, 0, 1499, std::nullopt}, {-4600, 7000, 6500, 6500},
    };
    for (const Row& row : rows) {
        const BatteryState state = readRegistry({{"DesignCapacity", 5000},
                                                 {"AppleRawMaxCapacity", row.raw},
                                                 {"NominalChargeCapacity", row.nominal},
                                                 {"MaxCapacity", row.max}});
        EXPECT_EQ(state.designCapacity, 5000);
        EXPECT_EQ(state.fullCapacity, row.fullCapacity) << &row - rows;
    }
}

TEST_F(BatteryReaderTest, ReadsTheDevicesOnceAtEachReading) {
    readRegistry(fullRegistry());
    EXPECT_EQ(sources.snapshots, 1);
    EXPECT_EQ(sources.registryReads, 1);
    reader.read();
    EXPECT_EQ(sources.snapshots, 2);
}

TEST_F(BatteryReaderTest, ObservesNothingUntilItIsAskedTo) {
    reader.read();
    EXPECT_EQ(sources.notifyCalls, 0);
}

TEST_F(BatteryReaderTest, PassesChangesOnWithoutReading) {
    int calls = 0;
    reader.startObserving([&] { ++calls; });
    EXPECT_EQ(calls, 0);
    sources.change();
    sources.change();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(sources.snapshots, 0);
}

TEST_F(BatteryReaderTest, ObservesOnlyOnce) {
    int first = 0;
    int second = 0;
    reader.startObserving([&] { ++first; });
    reader.startObserving([&] { ++second; });
    EXPECT_EQ(sources.notifyCalls, 1);
    sources.change();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
}

TEST_F(BatteryReaderTest, WithoutChangeReportsNothingIsStored) {
    int calls = 0;
    sources.reportsChanges = false;
    reader.startObserving([&] { ++calls; });
    sources.change();
    EXPECT_EQ(calls, 0);
    sources.reportsChanges = true;
    reader.startObserving([&] { ++calls; });
    sources.change();
    EXPECT_EQ(calls, 1);
}

TEST(BatteryReader, StopsObservingWhenItGoes) {
    FakePowerSources sources;
    const FakePowerSaving powerSaving;
    int calls = 0;
    auto reader = std::make_unique<BatteryReader>(sources, powerSaving);
    reader->startObserving([&] { ++calls; });
    reader.reset();
    sources.change();
    EXPECT_EQ(calls, 0);
}

} // namespace
