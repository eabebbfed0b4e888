// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryFile.h"
#include "history/HistoryStore.h"
#include "platform/linux/files/PosixFiles.h"
#include "platform/linux/session/TerminationSignals.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/OrdinaryUser.h"
#include "support/SmallDisk.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <functional>
#include <iterator>
#include <memory>
#include <string>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

/// A store on the disk of an ordinary user; times are in seconds from its first sample.
class HistoryDisk : public testing::Test {
protected:
    TemporaryFolder home;
    fs::path support = home.path / "support";
    fs::path folder = support / "Velmora";
    fs::path file = folder / "history.json";
    PosixFiles files{support};
    FakeClock clock;
    FakeCalendar calendar;
    std::unique_ptr<HistoryStore> store;

    HistoryDisk() { fs::create_directory(support); }

    void start() { store = std::make_unique<HistoryStore>(files, clock, calendar); }

    void record(Duration after, std::int64_t percent, bool pluggedIn = true) {
        record(*store, after, percent, pluggedIn);
    }
    void record(HistoryStore& history, Duration after, std::int64_t percent, bool pluggedIn = true) {
        BatteryState state;
        state.hasBattery = true;
        state.percent = percent;
        state.pluggedIn = pluggedIn;
        history.record(state, clock.now() + after, false);
    }

    SampleList onDisk() const { return decodeHistory(contentOf(file)).value_or(SampleList()); }

    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }

    /// Nothing can be written between `begin` and `end`; afterwards the file is complete, and no other file is left.
    void expectThatTroublePasses(const std::function<void()>& begin, const std::function<void()>& end) {
        start();
        record(0s, 80);
        const std::string before = contentOf(file);
        ASSERT_EQ(decodeHistory(before), store->samples);

        begin();
        record(60s, 79, false); // would be written at once
        record(420s, 78, false);
        record(480s, 77, false);
        EXPECT_EQ(store->samples.size(), 4U);
        end();
        EXPECT_EQ(contentOf(file), before);
        EXPECT_EQ(entries(), 1U);

        record(720s, 76, false); // 300 s after the last attempt
        EXPECT_EQ(contentOf(file), before);
        record(721s, 75, false);
        EXPECT_EQ(onDisk(), store->samples);
        EXPECT_EQ(onDisk().size(), 6U);
        EXPECT_EQ(entries(), 1U);
        EXPECT_EQ(HistoryStore(files, clock, calendar).samples, store->samples);
    }
};

} // namespace

TEST_F(HistoryDisk, IsFullForAWhile) {
    EXPECT_TRUE(inChild([this] {
        const TerminationSignals signals; // as in the program; otherwise the limit on the file size kills the process
        // Where the system does not let a test mount a file system, a limit on the file size takes its place.
        const bool isMounted = mountSmallDisk(support, 64 * 1024);
        const OrdinaryUser user(home.path);
        const fs::path ballast = support / "ballast";
        rlimit limit{};
        ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
        expectThatTroublePasses(
            [&] {
                const rlimit none{.rlim_cur = 0, .rlim_max = limit.rlim_max};
                if (isMounted)
                    write(ballast, std::string(64 * 1024, 'x'));
                else
                    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &none), 0);
            },
            [&] {
                if (isMounted)
                    fs::remove(ballast);
                else
                    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
            });
    }));
}

TEST_F(HistoryDisk, HasAFolderThatMayNotBeWrittenForAWhile) {
    const OrdinaryUser user(home.path);
    expectThatTroublePasses([this] { fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec); },
                            [this] { fs::permissions(folder, fs::perms::owner_all); });
}

TEST_F(HistoryDisk, HasAFolderThatMayNotBeEnteredForAWhile) {
    const OrdinaryUser user(home.path);
    expectThatTroublePasses([this] { fs::permissions(folder, fs::perms::none); },
                            [this] { fs::permissions(folder, fs::perms::owner_all); });
}

TEST_F(HistoryDisk, HasAFileInTheFoldersPlaceForAWhile) {
    const OrdinaryUser user(home.path);
    expectThatTroublePasses(
        [this] {
            fs::rename(folder, support / "aside");
            write(folder, "a file");
        },
        [this] {
            EXPECT_EQ(contentOf(folder), "a file");
            fs::remove(folder);
            fs::rename(support / "aside", folder);
        });
}

TEST_F(HistoryDisk, GetsItsFolderBackWithTheNextWrite) {
    const OrdinaryUser user(home.path);
    start();
    record(0s, 80);
    fs::remove_all(folder);
    record(60s, 79, false);
    EXPECT_EQ(onDisk(), store->samples);
    EXPECT_EQ(onDisk().size(), 2U);
}

TEST_F(HistoryDisk, GetsItsFolderLateWhereItMayNotBeMadeAtTheStart) {
    const OrdinaryUser user(home.path);
    fs::permissions(support, fs::perms::owner_read | fs::perms::owner_exec);
    start();
    record(0s, 80);
    record(60s, 79, false);
    EXPECT_EQ(store->samples.size(), 2U);
    EXPECT_TRUE(fs::is_empty(support));
    fs::permissions(support, fs::perms::owner_all);
    record(361s, 78, false);
    EXPECT_EQ(onDisk(), store->samples);
    EXPECT_EQ(onDisk().size(), 3U);
}

TEST_F(HistoryDisk, StartsEmptyWithAFileInTheFoldersPlaceAndLeavesItAlone) {
    const OrdinaryUser user(home.path);
    write(folder, "a file");
    start();
    EXPECT_TRUE(store->samples.empty());
    record(0s, 80);
    store->save(clock.now());
    EXPECT_EQ(store->samples.size(), 1U);
    EXPECT_EQ(contentOf(folder), "a file");
    fs::remove(folder);
    record(60s, 80, false);
    EXPECT_EQ(onDisk(), store->samples);
}

TEST_F(HistoryDisk, ReplacesAFileThatMayNotBeRead) {
    const OrdinaryUser user(home.path);
    fs::create_directory(folder);
    write(file, R"([{"t":1700000000,"p":1,"c":true,"a":true}])");
    fs::permissions(file, fs::perms::none);
    start();
    EXPECT_TRUE(store->samples.empty());
    record(0s, 80);
    EXPECT_EQ(onDisk(), store->samples);
    EXPECT_EQ(onDisk().size(), 1U);
}

TEST_F(HistoryDisk, IsSharedByTwoPrograms) {
    PosixFiles othersFiles(support);
    start();
    HistoryStore other(othersFiles, clock, calendar);
    record(0s, 80);
    ASSERT_TRUE(waitUntil([&] { return other.samples.size() == 1; }));
    record(60s, 79, false);
    ASSERT_TRUE(waitUntil([&] { return other.samples.size() == 2; }));
    record(other, 120s, 78);
    other.save(clock.now());
    EXPECT_EQ(onDisk().size(), 2U) << "the first one writes";

    other.reset(clock.now());
    ASSERT_TRUE(waitUntil([&] { return store->samples.empty(); }));
    record(180s, 77);
    store->save(clock.now());
    ASSERT_TRUE(waitUntil([&] { return other.samples.size() == 1; }));
    store->reset(clock.now());
    ASSERT_TRUE(waitUntil([&] { return other.samples.empty(); }));
    EXPECT_TRUE(store->samples.empty());
    EXPECT_EQ(contentOf(file), "[]");
}
