// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryStore.h"

#include "history/HistoryFile.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/FakeFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
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

    HistoryStore storeWith(const SampleList& samples) {
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
    EXPECT_EQ(storeWith({last, middle, old, sameTime}).samples, (SampleList{old, middle, sameTime, last}));
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
              (SampleList{aged(30 * 24h), aged(1h)}));
}

TEST_F(HistoryStoreTest, KeepsAllWhenAStartWouldDropMoreThanHalfOfIt) {
    const SampleList half{aged(32 * 24h), aged(31 * 24h), aged(2h), aged(1h)};
    EXPECT_EQ(storeWith(half).samples.size(), 2U);
    const SampleList more{aged(33 * 24h), aged(32 * 24h), aged(31 * 24h), aged(2h), aged(1h)};
    HistoryStore history = storeWith(more);
    EXPECT_EQ(history.samples, more);
    clock.pass(24h - 1s);
    history.record(onBattery, clock.now(), true);
    EXPECT_EQ(history.samples.size(), 6U) << "the clock may have been wrong at the start";
    clock.pass(1s);
    history.record(onBattery, clock.now(), true);
    EXPECT_EQ(history.samples.size(), 4U) << "it has run evenly for a day";
}

TEST_F(HistoryStoreTest, BelievesAClockUnderWhichItHasRunForADay) {
    SampleList samples;
    for (int i = 0; i < 3000; ++i)
        samples.push_back(aged(31 * 24h));
    for (int minute = 24 * 60; minute > 1; --minute)
        samples.push_back(aged(minute * 1min));
    EXPECT_EQ(storeWith(samples).samples.size(), samples.size());
    samples.push_back(aged(1min));
    EXPECT_EQ(storeWith(samples).samples.size(), 24U * 60U);
}

TEST_F(HistoryStoreTest, LosesNothingToAClockThatIsWeeksAheadForAWhile) {
    HistoryStore history = storeWith({aged(20 * 24h), aged(10 * 24h), aged(1h)});
    clock.setNow(start + 40 * 24h);
    history.record(pluggedIn, clock.now(), true);
    EXPECT_EQ(history.samples.size(), 4U);
    EXPECT_EQ(store().samples.size(), 4U) << "nor if it is started again";
    clock.pass(60s);
    clock.setNow(start);
    history.record(onBattery, clock.now(), true);
    EXPECT_EQ(history.samples.size(), 5U);
    EXPECT_EQ(history.samplesSince(start - 15 * 24h).size(), 4U);
    EXPECT_EQ(store().samples.size(), 5U);
}

TEST_F(HistoryStoreTest, DropsWhatGrewTooOldWhileTheMachineSlept) {
    HistoryStore history = storeWith({aged(20 * 24h), aged(10 * 24h), aged(1h)});
    clock.suspend(40 * 24h);
    history.record(pluggedIn, clock.now(), true);
    EXPECT_EQ(history.samples.size(), 1U);
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
    EXPECT_EQ(history.samples, (SampleList{Sample{.t = 1'700'000'000, .p = 64, .c = true, .a = true}}));
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

TEST_F(HistoryStoreTest, WritesAtOnceWhenTheClockIsBehindTheLastWrite) {
    HistoryStore history = store();
    history.record(reading(64, false, false), start, false);
    EXPECT_TRUE(records(history, reading(63, false, false), start - 24h, false));
    EXPECT_FALSE(records(history, reading(62, false, false), start - 24h + 300s, false));
    EXPECT_TRUE(records(history, reading(61, false, false), start - 24h + 301s, false));
}

TEST_F(HistoryStoreTest, LosesNothingWhenTheProcessEndsWithoutASave) {
    HistoryStore history = storeWith({aged(1h)});
    history.record(reading(64, false, true), start, false);
    history.record(reading(63, false, true), start + 1s, false);
    history.record(reading(62, false, true), start + 2s, false);
    EXPECT_EQ(store().samples.size(), 2U);
    const SampleList all = history.samples;
    EXPECT_EQ(all.size(), 4U);
    files.end();
    EXPECT_EQ(store().samples, all);
    history.record(reading(61, false, false), start + 3s, false);
    files.end();
    EXPECT_EQ(store().samples, history.samples) << "saved as usual, and not twice";
}

TEST_F(HistoryStoreTest, LosesNothingAtSuchAnEndThatCouldNotBeWrittenBefore) {
    HistoryStore history = storeWith({aged(1h)});
    files.refusesWrites = true;
    history.record(onBattery, start, false); // has to be written at once
    history.record(reading(63, false, false), start + 1s, false);
    files.refusesWrites = false;
    files.end();
    EXPECT_EQ(store().samples, history.samples);
    EXPECT_EQ(history.samples.size(), 3U);
}

TEST_F(HistoryStoreTest, WritesNothingBeforeItHasLoadedTheFile) {
    files.files[file] = *encodeHistory({aged(2h), aged(1h)});
    const std::string before = files.files[file];
    files.holdsLoads = true;
    HistoryStore history = store();
    int reloads = 0;
    history.onReload = [&] { ++reloads; };
    EXPECT_FALSE(history.isLoaded());
    history.save(start);
    EXPECT_FALSE(records(history, onBattery, start, true));
    files.end();
    EXPECT_EQ(files.files[file], before);
    files.heldLoads.at(0)();
    EXPECT_TRUE(history.isLoaded());
    EXPECT_EQ(reloads, 1);
    EXPECT_EQ(history.samples.size(), 3U);
    history.save(start);
    EXPECT_EQ(store().samples.size(), 3U);
}

TEST_F(HistoryStoreTest, IsEmptyIfItIsResetWhileTheFileIsLoaded) {
    files.files[file] = *encodeHistory({aged(2h), aged(1h)});
    files.holdsLoads = true;
    HistoryStore history = store();
    int reloads = 0;
    history.onReload = [&] { ++reloads; };
    history.reset(start);
    EXPECT_EQ(reloads, 1);
    EXPECT_EQ(files.files[file], "[]");
    files.heldLoads.at(0)();
    EXPECT_TRUE(history.isLoaded());
    EXPECT_TRUE(history.samples.empty());
}

TEST_F(HistoryStoreTest, MayEndWhileTheFileIsLoaded) {
    files.holdsLoads = true;
    { const HistoryStore history = store(); }
    files.heldLoads.at(0)();
}

TEST_F(HistoryStoreTest, OnlyShowsWhatAnotherProgramWrites) {
    files.isClaimedByAnother = true;
    HistoryStore history = storeWith({aged(1h)});
    int reloads = 0;
    history.onReload = [&] { ++reloads; };
    EXPECT_FALSE(records(history, onBattery, start, false));
    EXPECT_FALSE(records(history, pluggedIn, start + 1s, false));
    history.save(start + 2s);
    files.end();
    EXPECT_EQ(store().samples, SampleList{aged(1h)});
    // The other's samples take the place of its own, except for those that the other has not written yet.
    const Sample theirs = aged(-500ms);
    files.replaceByAnother(file, *encodeHistory({aged(1h), aged(0s), theirs}));
    EXPECT_EQ(reloads, 1);
    ASSERT_EQ(history.samples.size(), 4U);
    EXPECT_EQ(history.samples[2], theirs);
    EXPECT_EQ(history.samples[3].date(), start + 1s);
}

TEST_F(HistoryStoreTest, TakesOverWhenTheProgramThatWritesHasEnded) {
    files.isClaimedByAnother = true;
    HistoryStore history = storeWith({aged(1h)});
    history.record(onBattery, start, false);
    // Its last save, of which nothing has been heard yet.
    files.files[file] = *encodeHistory({aged(1h), aged(10s)});
    files.isClaimedByAnother = false;
    history.record(reading(63, false, false), start + 1s, false);
    EXPECT_EQ(history.samples.size(), 4U);
    EXPECT_EQ(store().samples.size(), 3U) << "written at once";
    files.end();
    EXPECT_EQ(store().samples, history.samples);
    EXPECT_TRUE(records(history, pluggedIn, start + 2s, false));
}

TEST_F(HistoryStoreTest, KeepsWhatOnlyItHasAlsoBesideSamplesFromTheFuture) {
    files.isClaimedByAnother = true;
    HistoryStore history = storeWith({aged(1h), aged(-40 * 24h)});
    clock.pass(60s);
    history.record(onBattery, clock.now(), false);
    files.replaceByAnother(file, *encodeHistory({aged(1h), aged(-40 * 24h), aged(-30s)}));
    ASSERT_EQ(history.samples.size(), 4U);
    EXPECT_EQ(history.samples.back().date(), clock.now());
}

TEST_F(HistoryStoreTest, IsResetFromEitherOfTwoPrograms) {
    HistoryStore writer = storeWith({aged(1h)});
    files.isClaimedByAnother = true;
    HistoryStore other = store();
    files.isClaimedByAnother = false;
    writer.record(onBattery, start, false);

    writer.reset(start);
    files.replaceByAnother(file, files.files[file]); // as the other program hears of it
    EXPECT_TRUE(other.samples.empty());

    files.isClaimedByAnother = true;
    writer.record(onBattery, start + 1s, false);
    other.record(onBattery, start + 1s, false);
    other.reset(start + 2s);
    EXPECT_EQ(files.files[file], "[]");
    files.replaceByAnother(file, "[]");
    EXPECT_TRUE(writer.samples.empty());
    EXPECT_TRUE(other.samples.empty());
}

TEST_F(HistoryStoreTest, OverwritesNoResetOfAnotherProgramThatItHasNotHeardOfYet) {
    HistoryStore writer = storeWith({aged(1h)});
    int reloads = 0;
    writer.onReload = [&] { ++reloads; };
    writer.record(onBattery, start, false);
    files.files[file] = "[]";
    writer.record(pluggedIn, start + 1s, false);
    EXPECT_EQ(files.files[file], "[]");
    EXPECT_TRUE(writer.samples.empty());
    EXPECT_EQ(reloads, 1);
    writer.record(onBattery, start + 400s, false);
    EXPECT_EQ(store().samples, writer.samples);
    EXPECT_EQ(writer.samples.size(), 1U);
}

TEST_F(HistoryStoreTest, TakesAWriteThatWasCanceledForNoReset) {
    HistoryStore history = storeWith({aged(1h)});
    files.refusesWrites = true;
    files.refusal = std::errc::operation_canceled;
    history.record(pluggedIn, start, false);
    EXPECT_EQ(history.samples.size(), 2U);
    files.refusesWrites = false;
    history.record(onBattery, start + 1s, false);
    EXPECT_EQ(store().samples, history.samples);
    EXPECT_EQ(history.samples.size(), 3U);
}

TEST_F(HistoryStoreTest, WritesAfterItsOwnReset) {
    HistoryStore history = storeWith({aged(1h)});
    history.reset(start);
    history.record(onBattery, start + 1s, false);
    history.save(start + 2s);
    history.reset(start + 3s);
    history.record(onBattery, start + 4s, false);
    history.save(start + 5s);
    EXPECT_EQ(store().samples, history.samples);
    EXPECT_EQ(history.samples.size(), 1U);
}

TEST_F(HistoryStoreTest, AnswersNoEmptyFileWithAnother) {
    HistoryStore history = store();
    const std::size_t before = files.replacedPaths.size();
    files.replaceByAnother(file, "[]");
    EXPECT_EQ(files.replacedPaths.size(), before);
}

TEST_F(HistoryStoreTest, LosesNothingAtAnEndWhileASlowDiskIsWritten) {
    HistoryStore history = storeWith({aged(1h)});
    files.holdsUpdates = true;
    history.record(pluggedIn, start, false);
    history.record(onBattery, start + 1s, false);
    history.record(reading(63, false, false), start + 2s, false);
    files.end();
    EXPECT_EQ(store().samples, history.samples) << "with what still waits";
    ASSERT_EQ(files.heldUpdates.size(), 2U);
    files.heldUpdates[0]();
    files.heldUpdates[1]();
    history.record(reading(62, false, false), start + 3s, false);
    files.end();
    EXPECT_EQ(store().samples, history.samples) << "with what came after it";
    EXPECT_EQ(history.samples.size(), 5U);
}

TEST_F(HistoryStoreTest, StaysEmptyAtAnEndAfterAResetThatASlowDiskHasNotWritten) {
    HistoryStore history = storeWith({aged(1h)});
    files.holdsUpdates = true;
    history.reset(start);
    history.record(reading(63, false, false), start + 1s, false);
    files.end();
    EXPECT_EQ(store().samples, history.samples);
    EXPECT_EQ(history.samples.size(), 1U);
}

TEST_F(HistoryStoreTest, TakesOverWhenItIsSavedAtTheEnd) {
    files.isClaimedByAnother = true;
    HistoryStore history = storeWith({aged(1h)});
    history.record(onBattery, start, false);
    files.isClaimedByAnother = false;
    history.save(start + 1s);
    EXPECT_EQ(store().samples, history.samples);
    EXPECT_EQ(history.samples.size(), 2U);
}

TEST_F(HistoryStoreTest, IsNotTakenFromAFileThatSomebodyPutsInItsPlace) {
    HistoryStore history = storeWith({aged(1h)});
    files.replaceByAnother(file, *encodeHistory({aged(3h), aged(2h)}));
    EXPECT_EQ(history.samples, SampleList{aged(1h)});
    files.replaceByAnother(file, "damaged");
    EXPECT_EQ(history.samples, SampleList{aged(1h)});
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
    EXPECT_TRUE(std::ranges::equal(history.samplesSince(start - 2h), std::vector{aged(2h), aged(1h)}));
    EXPECT_TRUE(std::ranges::equal(history.samplesSince(start - 2h + 1ms), std::vector{aged(1h)}));
    EXPECT_TRUE(history.samplesSince(start - 1h + 1ms).empty());
}

TEST_F(HistoryStoreTest, GivesAllSamplesFromTheFirstThatIsLateEnough) {
    HistoryStore history = store();
    history.samples = {aged(3h), aged(1h), aged(2h)};
    EXPECT_TRUE(std::ranges::equal(history.samplesSince(start - 90min), std::vector{aged(1h), aged(2h)}));
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
