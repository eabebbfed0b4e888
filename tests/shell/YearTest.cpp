// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryFile.h"
#include "shell/AppModel.h"
#include "support/FakePlatform.h"
#include "support/Soak.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr Duration day = 24h;
constexpr Duration kept = 30 * day;
constexpr int days = 365;
constexpr int sessionsOfADay = 3;
constexpr Duration session = 1h;

/// A year of the program without its windows. The laptop is used three times a day, each time first at the charger and
/// then without, and sleeps in between. Every day is like the one before, so that nothing has a reason to grow.
class Year : public ::testing::Test {
protected:
    FakePlatform fake;
    AppModel model{fake.platform()};
    int minutes = 0;
    int readings = 0;
    std::size_t samplesOfADay = 0;
    bool isWaking = false;

    Year() {
        fake.powerSources.registry = Value(Dictionary{{"CycleCount", 300}, {"DesignCapacity", 5000}});
        fake.powerSources.whileReading = [this] { ++readings; };
        laptop(50, false);
    }

    void laptop(int percent, bool pluggedIn) {
        fake.powerSources.setBattery(percent, pluggedIn, pluggedIn && percent < 100);
    }

    void use() {
        const int half = static_cast<int>(session / 2min);
        for (int minute = 0; minute < 2 * half; ++minute) {
            const bool pluggedIn = minute < half;
            const int step = (pluggedIn ? minute : 2 * half - minute) * 60 / half;
            laptop(35 + step, pluggedIn);
            if (minute % half == 0)
                fake.powerSources.change();
            const std::int64_t before = model.historyVersion.get();
            fake.mainLoop.advance(60s);
            ++minutes;
            // The timer's reading, and one more in the first minute after a sleep.
            ASSERT_EQ(model.historyVersion.get() - before, 1 + (isWaking ? 1 : 0)) << "minute " << minutes;
            isWaking = false;
            checkHistory();
        }
    }

    void sleep() {
        fake.sessionEvents.prepareForSleep();
        fake.clock.suspend(day / sessionsOfADay - session);
        fake.sessionEvents.wake();
        isWaking = true;
    }

    void checkHistory() {
        const Date now = fake.clock.now();
        const auto& samples = model.history.samples;
        ASSERT_GE(samples.front().date(), now - kept);
        ASSERT_EQ(samples.back().date(), now) << "the timer is as punctual as on the first day";
        // All samples that may be kept are there, even the one of exactly the greatest age.
        if (minutes > static_cast<int>(kept / day * sessionsOfADay * session / 1min)) {
            ASSERT_EQ(samples.front().date(), now - kept);
            ASSERT_EQ(samples.size(), 30 * samplesOfADay + 1);
        }
    }

    /// Drops the records of the fakes, which are not the program's memory.
    void forget() {
        fake.journal.clear();
        fake.files.replacedPaths.clear();
        fake.files.readPaths.clear();
        fake.notificationCenter.requests.clear();
        fake.notificationCenter.removed.clear();
    }
};

TEST_F(Year, NeitherGrowsNorDriftsAndKeepsThirtyDays) {
    model.start();
    std::vector<double> memory;
    memory.reserve(days); // so that the list does not grow while memory is measured
    for (int today = 0; today < days && !HasFailure(); ++today) {
        for (int i = 0; i < sessionsOfADay; ++i) {
            use();
            if (i == 1)
                fake.notificationCenter.press("SNOOZE");
            sleep();
        }
        // Counted on the second day: the first began with the launch.
        if (today < 2)
            samplesOfADay = model.history.samples.size() - samplesOfADay;
        forget();
        if (today > 31)
            memory.push_back(allocatedBytes());
    }
    ASSERT_FALSE(HasFailure());
    EXPECT_EQ(minutes, days * sessionsOfADay * static_cast<int>(session / 1min));
    EXPECT_EQ(fake.mainLoop.repetitions.size(), 1U);
    const double growth = slope(memory);
    std::printf("%.3f bytes a day\n", growth);
    // One reading each minute, three wakings a day (the very first is the launch), and each time plugged in and
    // unplugged. The waking from the last sleep is still to come.
    EXPECT_EQ(readings, minutes + days * sessionsOfADay * (1 + 2));
    // A leak of the smallest block a day would be 32.
    EXPECT_LT(std::abs(growth), 8);
    const auto onDisk = decodeHistory(fake.files.files.at("/home/user/.local/share/Velmora/history.json"));
    ASSERT_TRUE(onDisk);
    EXPECT_EQ(onDisk->size(), model.history.samples.size());
}

} // namespace
