// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"

#include "history/HistoryFile.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/FakeFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

BatteryState reading(std::int64_t percent, bool charging, bool pluggedIn) {
    BatteryState state;
    state.hasBattery = true;
    state.percent = percent;
    state.isCharging = charging;
    state.pluggedIn = pluggedIn;
    return state;
}

struct HistoryStoreTest : ::testing::Test {
    const std::filesystem::path file = "/home/user/.local/share/Velmora/history.json";
    const Date start{Duration(1'700'000'000)};
    FakeFiles files;
    FakeClock clock{start};
    FakeCalendar calendar;

    HistoryStore store() { return {files, clock, calendar}; }

    HistoryStore storeWith(const std::deque<Sample>& samples) {
        files.files[file] = *encodeHistory(samples);
        return store();
    }
    /// Offers a reading, and returns whether the file was written.
    bool records(HistoryStore& history, const BatteryState& state, Date now, bool force) {
        const std::size_t before = files.replacedPaths.size();
        history.record(state, now, force);
        return files.replacedPaths.size() > before;
    }
    /// A sample of that age.
    Sample aged(Duration age, bool pluggedIn = true) {
        return {.t = (start - age).time_since_epoch().count(), .p = 80, .c = false, .a = pluggedIn};
    }
};

const BatteryState onBattery = reading(64, false, false);
const BatteryState pluggedIn = reading(64, false, true);
const BatteryState charging = reading(64, true, true);

TEST_F(HistoryStoreTest, MakesItsFolderAndWritesNothingWhileItLoads) {
    EXPECT_TRUE(store().samples.empty());
    EXPECT_TRUE(files.folders.contains(file.parent_path()));
    EXPECT_EQ(files.readPaths, std::vector{file});
    EXPECT_TRUE(files.replacedPaths.empty());
}

TEST_F(HistoryStoreTest, IsEmptyWhereNothingCanBeReadOrWritten) {
    files.refusesReads = true;
    files.refusesWrites = true;
    HistoryStore history = store();
    EXPECT_TRUE(history.samples.empty());
    history.record(onBattery, start, true);
    EXPECT_EQ(history.samples.size(), 1U);
}

TEST_F(HistoryStoreTest, LoadsSamplesInTheOrderOfTheirTimes) {
    const Sample old = aged(2h), middle = aged(1h), last = aged(1min);
    Sample sameTime = middle;
    sameTime.p = 10;
    EXPECT_EQ(storeWith({last, middle, old, sameTime}).samples, (std::deque{old, middle, sameTime, last}));
}

TEST_F(HistoryStoreTest, TakesADamagedFileForAnEmptyHistoryAndReplacesItWithTheNextSave) {
    const std::string damaged = R"([{"t":1699999000,"p":80,"c":true,"a":true},{"t":1699999060,"p":80,"c":true}])";
    files.files[file] = damaged;
    HistoryStore history = store();
    EXPECT_TRUE(history.samples.empty());
    EXPECT_EQ(files.files[file], damaged);
    history.record(onBattery, start, false);
    EXPECT_EQ(files.files[file], R"([{"t":1700000000,"p":64,"c":false,"a":false}])");
}

TEST_F(HistoryStoreTest, DoesNotReadAFileThatNoHistoryFills) {
    files.files[file] = "[" + std::string(std::size_t{64} << 20, ' ') + "]";
    EXPECT_TRUE(store().samples.empty());
    files.files[file] = R"([{"t":1699999000,"p":80,"c":true,"a":true}])" + std::string(1000, '\n');
    EXPECT_EQ(store().samples.size(), 1U);
}

TEST_F(HistoryStoreTest, KeepsASampleExactlyThirtyDaysOld) {
    EXPECT_EQ(storeWith({aged(30 * 24h + 1ms), aged(30 * 24h), aged(1h)}).samples,
              (std::deque{aged(30 * 24h), aged(1h)}));
    EXPECT_TRUE(storeWith({aged(31 * 24h)}).samples.empty());
}

TEST_F(HistoryStoreTest, DropsWhatGrowsTooOldWhileItRecords) {
    HistoryStore history = storeWith({aged(30 * 24h), aged(1h)});
    history.record(onBattery, start, true);
    EXPECT_EQ(history.samples.size(), 3U);
    history.record(onBattery, start + 1s, true);
    ASSERT_EQ(history.samples.size(), 3U);
    EXPECT_EQ(history.samples.front(), aged(1h));
}

TEST_F(HistoryStoreTest, StopsPruningAtTheFirstSampleThatIsYoungEnough) {
    HistoryStore history = store();
    history.samples = {aged(1h), aged(40 * 24h), aged(2h)}; // as when the clock was set back
    history.record(onBattery, start, true);
    EXPECT_EQ(history.samples.size(), 4U);
}

TEST_F(HistoryStoreTest, RecordsNothingWithoutABattery) {
    HistoryStore history = store();
    EXPECT_FALSE(records(history, BatteryState(), start, true));
    EXPECT_TRUE(history.samples.empty());
}

TEST_F(HistoryStoreTest, WritesTheFirstSampleAtOnce) {
    HistoryStore history = store();
    EXPECT_TRUE(records(history, charging, start, false));
    EXPECT_EQ(history.samples, (std::deque{Sample{.t = 1'700'000'000, .p = 64, .c = true, .a = true}}));
    HistoryStore again = store();
    EXPECT_EQ(again.samples, history.samples);
}

TEST_F(HistoryStoreTest, DropsAReadingThatSaysNothingNewUnlessItIsForced) {
    HistoryStore history = store();
    history.record(pluggedIn, start, false);
    EXPECT_FALSE(records(history, pluggedIn, start + 1h, false));
    EXPECT_EQ(history.samples.size(), 1U);
    EXPECT_FALSE(records(history, pluggedIn, start + 300s, true)) << "five minutes are not more than five minutes";
    EXPECT_EQ(history.samples.size(), 2U);
    EXPECT_TRUE(records(history, pluggedIn, start + 300s + 1ms, true));
    EXPECT_EQ(history.samples.size(), 3U);
}

TEST_F(HistoryStoreTest, BatchesChangesOfThePercentage) {
    HistoryStore history = store();
    history.record(reading(64, false, false), start, false);
    EXPECT_FALSE(records(history, reading(63, false, false), start + 100s, false));
    EXPECT_FALSE(records(history, reading(62, false, false), start + 300s, false));
    EXPECT_EQ(history.samples.size(), 3U);
    EXPECT_TRUE(records(history, reading(61, false, false), start + 301s, false));
    EXPECT_EQ(store().samples.size(), 4U);
}

TEST_F(HistoryStoreTest, WritesAtOnceWhenThePlugOrTheChargingChanges) {
    HistoryStore history = store();
    history.record(charging, start, false);
    EXPECT_TRUE(records(history, pluggedIn, start + 1s, false)) << "charging stopped";
    EXPECT_TRUE(records(history, onBattery, start + 2s, false)) << "unplugged";
    EXPECT_TRUE(records(history, charging, start + 3s, false)) << "both";
    EXPECT_EQ(history.samples.size(), 4U);
}

TEST_F(HistoryStoreTest, WaitsAlsoAfterAWriteThatFailed) {
    HistoryStore history = store();
    history.record(reading(64, false, false), start, false);
    files.refusesWrites = true;
    EXPECT_TRUE(records(history, reading(63, false, false), start + 400s, false));
    files.refusesWrites = false;
    EXPECT_FALSE(records(history, reading(62, false, false), start + 500s, false));
    EXPECT_TRUE(records(history, reading(61, false, false), start + 701s, false));
    EXPECT_EQ(store().samples.size(), 4U) << "nothing was lost";
}

TEST_F(HistoryStoreTest, AWriteFromOutsideCountsAsTheLastOne) {
    HistoryStore history = store();
    history.save(start);
    EXPECT_EQ(files.files[file], "[]");
    EXPECT_FALSE(records(history, onBattery, start + 300s, true));
    EXPECT_TRUE(records(history, onBattery, start + 301s, true));
}

TEST_F(HistoryStoreTest, LeavesTheFileAloneWhenATimeCannotBeWritten) {
    HistoryStore history = storeWith({aged(1h)});
    const std::string before = files.files[file];
    history.samples.push_back({.t = std::numeric_limits<double>::quiet_NaN()});
    history.save(start);
    EXPECT_EQ(files.files[file], before);
}

TEST_F(HistoryStoreTest, GivesTheSamplesFromATimeOn) {
    const HistoryStore history = storeWith({aged(3h), aged(2h), aged(1h)});
    EXPECT_EQ(history.samplesSince(start - 4h).size(), 3U);
    EXPECT_EQ(history.samplesSince(start - 2h), (std::vector{aged(2h), aged(1h)}));
    EXPECT_EQ(history.samplesSince(start - 2h + 1ms), (std::vector{aged(1h)}));
    EXPECT_TRUE(history.samplesSince(start - 1h + 1ms).empty());
}

TEST_F(HistoryStoreTest, GivesAllSamplesFromTheFirstThatIsLateEnough) {
    HistoryStore history = store();
    history.samples = {aged(3h), aged(1h), aged(2h)};
    EXPECT_EQ(history.samplesSince(start - 90min), (std::vector{aged(1h), aged(2h)}));
}

TEST_F(HistoryStoreTest, KnowsNoStartOfBeingPluggedInWithoutAFreshPluggedInSample) {
    EXPECT_EQ(store().pluggedSinceEstimate(start), std::nullopt);
    EXPECT_EQ(storeWith({aged(1min), aged(0s, false)}).pluggedSinceEstimate(start), std::nullopt);
    EXPECT_EQ(storeWith({aged(600s)}).pluggedSinceEstimate(start), std::nullopt);
    EXPECT_EQ(storeWith({aged(599s)}).pluggedSinceEstimate(start), start - 599s);
}

TEST_F(HistoryStoreTest, FollowsThePluggedInRunBackOverGapsOfUpToAQuarterOfAnHour) {
    // Samples at 0, 600, 1500 and 2000 s.
    EXPECT_EQ(storeWith({aged(2000s), aged(1400s), aged(500s), aged(0s)}).pluggedSinceEstimate(start), start - 2000s);
    EXPECT_EQ(storeWith({aged(2001s), aged(1401s), aged(500s), aged(0s)}).pluggedSinceEstimate(start), start - 500s);
    EXPECT_EQ(storeWith({aged(300s), aged(200s, false), aged(100s), aged(0s)}).pluggedSinceEstimate(start),
              start - 100s);
}

TEST_F(HistoryStoreTest, ExportsWhatItRemembers) {
    HistoryStore history = store();
    history.record(charging, start, false);
    EXPECT_EQ(history.csv(), "timestamp,percent,charging,plugged_in\n2023-11-14T22:13:20Z,64,true,true\n");
}

} // namespace
