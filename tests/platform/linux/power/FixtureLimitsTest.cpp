// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/LimitWatch.h"
#include "platform/linux/power/PowerReading.h"
#include "support/Fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

const std::string endFile = "charge_control_end_threshold";

/// A machine of the fixtures that is used for a month, with the charge limit of its firmware, which it keeps to.
class FixtureLimits : public testing::TestWithParam<std::filesystem::path> {
protected:
    std::vector<PowerSupply> supplies;
    LimitWatch watch;
    Duration uptime = 1h;
    std::vector<std::string> told;

    FixtureLimits() {
        const Fixture fixture = Fixture::load(GetParam());
        for (const Fixture::Device& device : fixture.devices) {
            PowerSupply supply{.name = device.name, .attributes = {}};
            for (const auto& [attribute, value] : device.attributes) {
                if (value)
                    supply.attributes.emplace(attribute, *value + "\n");
            }
            supplies.push_back(std::move(supply));
        }
    }

    template <class Function>
    void eachBattery(Function function) {
        for (PowerSupply& supply : supplies) {
            if (supply.isSystemBattery())
                function(supply);
        }
    }

    void look(bool prime = false) {
        uptime += 60s;
        const PowerReading reading = PowerReading::of(supplies);
        const bool pluggedIn = !reading.packs.empty() && reading.onExternalPower;
        for (const LimitAlert& alert : watch.run(reading.packLimits, pluggedIn, uptime, !prime, prime).due)
            told.push_back(alert.body);
    }

    /// All batteries have this charge, with all numbers that tell it, and this status.
    void show(int percent, const char* status, bool online) {
        eachBattery([&](PowerSupply& battery) {
            battery.attributes["status"] = std::string(status) + "\n";
            battery.attributes["capacity"] = std::to_string(percent) + "\n";
            for (const char* kind : {"energy", "charge"}) {
                const auto full = battery.number(std::string(kind) + "_full");
                if (full && battery.attributes.contains(std::string(kind) + "_now"))
                    battery.attributes[std::string(kind) + "_now"] =
                        std::to_string(static_cast<std::int64_t>(*full * percent / 100)) + "\n";
            }
            for (const char* rate : {"power_now", "current_now"}) { // a minus sign would deny that it charges
                const auto now = battery.number(rate);
                if (now && *now < 0)
                    battery.attributes[rate] = std::to_string(static_cast<std::int64_t>(-*now)) + "\n";
            }
        });
        for (PowerSupply& supply : supplies) {
            if (supply.isExternalSupply())
                supply.attributes["online"] = online ? "1\n" : "0\n";
        }
    }

    /// Thirty days: charged to the limit, held there with a swing of a point, on battery, asleep, started anew.
    void live(int limit) {
        for (int day = 0; day < 30; ++day) {
            for (int percent = 40; percent < limit; ++percent) {
                show(percent, "Charging", true);
                look();
            }
            for (int minute = 0; minute < 240; ++minute) {
                show(limit + std::min(minute % 30, 1), minute % 30 == 0 ? "Charging" : "Not charging", true);
                look();
            }
            for (int percent = limit; percent > 40; --percent) {
                show(percent, "Discharging", false);
                look();
            }
            uptime += 8h;
            if (day % 5 == 4) {
                LimitWatch fresh;
                fresh.memory = LimitMemory::decode(watch.memory.encoded());
                watch = fresh;
            }
            look(true);
        }
    }
};

std::string nameOf(const testing::TestParamInfo<std::filesystem::path>& info) {
    std::string name = info.param.stem().string();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

} // namespace

TEST_P(FixtureLimits, ItselfTellsNothing) {
    look(true);
    for (int minute = 0; minute < 24 * 60; ++minute)
        look();
    EXPECT_EQ(told, std::vector<std::string>());
}

TEST_P(FixtureLimits, TellsNothingInAMonthAsItIs) {
    look(true);
    live(100);
    EXPECT_EQ(told, std::vector<std::string>());
}

TEST_P(FixtureLimits, TellsNothingInAMonthWithALimitThatIsKept) {
    for (const int limit : {60, 80, 95}) {
        watch = {};
        eachBattery([&](PowerSupply& battery) { battery.attributes[endFile] = std::to_string(limit) + "\n"; });
        look(true);
        live(limit);
        EXPECT_EQ(told, std::vector<std::string>()) << limit;
    }
}

TEST_P(FixtureLimits, TellsOfALimitThatIsIgnoredAndOfOneThatIsLost) {
    eachBattery([&](PowerSupply& battery) { battery.attributes[endFile] = "80\n"; });
    show(60, "Charging", true);
    look(true);
    const bool isWatched = !PowerReading::of(supplies).packLimits.empty();
    for (int percent = 60; percent < 84; ++percent) {
        show(percent, "Charging", true);
        look();
    }
    for (int minute = 0; minute < 15; ++minute) {
        show(84, "Charging", true);
        look();
    }
    std::vector<std::string> due;
    if (isWatched)
        due.emplace_back("The firmware's limit is 80%, but the battery is at 84% and still charging.");
    EXPECT_EQ(told, due);
    eachBattery([&](PowerSupply& battery) { battery.attributes[endFile] = "100\n"; });
    look(true);
    look();
    if (isWatched)
        due.emplace_back("The firmware's limit was 80% and is now 100%.");
    EXPECT_EQ(told, due);
}

INSTANTIATE_TEST_SUITE_P(Machines, FixtureLimits, testing::ValuesIn(Fixture::all()), nameOf);
