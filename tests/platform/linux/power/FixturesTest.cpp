// SPDX-License-Identifier: GPL-3.0-or-later
#include "battery/BatteryReader.h"
#include "platform/linux/power/SysfsPowerSources.h"
#include "support/FakeClock.h"
#include "support/FakeMainLoop.h"
#include "support/FakePowerSaving.h"
#include "support/Fixture.h"
#include "support/TemporaryFolder.h"
#include "support/Umockdev.h"

#include <QJsonArray>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace std::chrono_literals;

namespace {

/// How the adapter sees the devices of a fixture.
enum class Shown {
    throughUmockdev, ///< below /sys; an attribute that cannot be read is missing
    asFiles,         ///< in a folder; reading such an attribute fails
};

class FixturesTest : public testing::TestWithParam<std::tuple<std::filesystem::path, Shown>> {
protected:
    Fixture fixture = Fixture::load(std::get<0>(GetParam()));
    FakeClock clock;
    FakeMainLoop loop{clock};
    FakePowerSaving powerSaving;

    FixturesTest() {
        if (std::get<1>(GetParam()) == Shown::throughUmockdev) {
            supplies_ = std::make_unique<SimulatedSupplies>();
            supplies_->add(fixture);
            sources = std::make_unique<SysfsPowerSources>("/sys", clock, loop);
        } else {
            fixture.writeTree(folder_.path);
            sources = std::make_unique<SysfsPowerSources>(folder_.path, clock, loop);
        }
    }

private:
    TemporaryFolder folder_;
    std::unique_ptr<SimulatedSupplies> supplies_;

protected:
    std::unique_ptr<SysfsPowerSources> sources;

    /// Whether the fixture says what `key` must be. For some keys it accepts an unknown value too.
    bool decides(const char* key, bool isKnown = true) const {
        const auto listed = [&](const char* list) {
            return fixture.expected[QLatin1String(list)].toArray().contains(QLatin1String(key));
        };
        return !listed("unchecked") && (isKnown || !listed("nullAlsoAccepted"));
    }

    QJsonValue expected(const char* key) const { return fixture.expected[QLatin1String(key)]; }

    void expectNumber(const char* key, std::optional<double> actual, double tolerance) const {
        if (!decides(key, actual.has_value()))
            return;
        const QJsonValue wanted = expected(key);
        if (wanted.isNull()) {
            EXPECT_EQ(actual, std::nullopt) << key;
        } else if (actual) {
            EXPECT_NEAR(*actual, wanted.toDouble(), tolerance) << key;
        } else {
            ADD_FAILURE() << key << " is unknown and should be " << wanted.toDouble();
        }
    }

    void expectRelative(const char* key, std::optional<double> actual, double share) const {
        // Fixtures are rounded, so half a unit of their last digit is added.
        expectNumber(key, actual, std::abs(expected(key).toDouble()) * share + 0.0005);
    }
};

template <class Number>
std::optional<double> real(std::optional<Number> number) {
    return number ? std::optional(static_cast<double>(*number)) : std::nullopt;
}

std::optional<double> adapterWatts(const PowerSnapshot& snapshot) {
    const Value registry = snapshot.batteryProperties().value();
    const Value* adapter = find(*registry.dictionary(), "AdapterDetails");
    return adapter ? real(find(*adapter->dictionary(), "Watts")->integer()) : std::nullopt;
}

bool isOnExternalPower(const PowerSnapshot& snapshot) {
    const Dictionary* battery = snapshot.sources->front()->dictionary();
    return *find(*battery, "Power Source State")->text() == "AC Power";
}

std::string nameOf(const testing::TestParamInfo<FixturesTest::ParamType>& info) {
    std::string name = std::get<0>(info.param).stem().string();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name + (std::get<1>(info.param) == Shown::asFiles ? "_asFiles" : "_throughUmockdev");
}

} // namespace

TEST_P(FixturesTest, IsReadRight) {
    ASSERT_FALSE(fixture.expected.isEmpty()) << "the fixture does not say what is right";
    // Without a battery the state is empty; only the snapshot then holds the adapter and the power source.
    const PowerSnapshot snapshot = sources->snapshot();
    const BatteryState state = BatteryReader(*sources, powerSaving).read();
    EXPECT_EQ(state.hasBattery, expected("hasBattery").toBool());
    if (decides("pluggedIn")) {
        EXPECT_EQ(isOnExternalPower(snapshot), expected("pluggedIn").toBool());
        EXPECT_EQ(state.pluggedIn, expected("pluggedIn").toBool() && state.hasBattery);
    }
    if (decides("isCharging")) {
        EXPECT_EQ(state.isCharging, expected("isCharging").toBool());
    }
    if (decides("isCharged")) {
        EXPECT_EQ(state.isCharged, expected("isCharged").toBool());
    }
    expectNumber("adapterWatts", adapterWatts(snapshot), 0);
    if (state.hasBattery) {
        expectNumber("percent", static_cast<double>(state.percent), expected("percentTolerance").toDouble());
        expectNumber("adapterWatts", real(state.adapterWatts), 0);
    }
    expectNumber("cycleCount", real(state.cycleCount), 0);
    expectNumber("healthPercent", state.healthPercent(), 1);
    expectNumber("temperatureC", state.temperatureC, 0.05);
    expectRelative("voltageV", state.voltage, 0.02);
    expectRelative("amperageA", state.amperage, 0.02);
}

TEST_P(FixturesTest, TellsTheTimeAtTheSecondReading) {
    BatteryReader reader(*sources, powerSaving);
    const BatteryState first = reader.read();
    EXPECT_EQ(first.minutesToEmpty, std::nullopt);
    EXPECT_EQ(first.minutesToFull, std::nullopt);
    loop.advance(20s);
    const BatteryState second = reader.read();
    const double tolerance = expected("minutesTolerance").toDouble();
    // Times are whole minutes, so one minute is added.
    for (const auto& [key, minutes] :
         {std::pair("minutesToEmpty", second.minutesToEmpty), std::pair("minutesToFull", second.minutesToFull)})
        expectNumber(key, real(minutes), expected(key).toDouble() * tolerance + 1);
}

INSTANTIATE_TEST_SUITE_P(Machines, FixturesTest,
                         testing::Combine(testing::ValuesIn(Fixture::all()),
                                          testing::Values(Shown::throughUmockdev, Shown::asFiles)),
                         nameOf);

TEST(Fixtures, AreAllThere) {
    EXPECT_EQ(Fixture::all().size(), 43U);
}
