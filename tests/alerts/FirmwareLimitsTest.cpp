// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/FirmwareLimits.h"

#include "support/FakeFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

using namespace std::chrono_literals;

namespace {

struct FirmwareLimitsTest : ::testing::Test {
    FakeFiles files;
    std::optional<FirmwareLimits> limits;
    const std::filesystem::path path = "/home/user/.local/state/Velmora/charge-limits";

    FirmwareLimitsTest() { limits.emplace(files); }

    void look(std::int64_t limit, bool prime = false) {
        const PackLimit pack{.device = "BAT0", .model = "X", .design = 57000, .tellsLimit = true, .limit = limit};
        limits->run({pack}, false, 1h, true, prime);
    }
};

TEST_F(FirmwareLimitsTest, KeepsTheMemoryInAFileOfItsOwn) {
    EXPECT_EQ(FirmwareLimits::file(files), path);
    look(80, true);
    EXPECT_EQ(files.files.at(path), "80 57000 X\n");
    limits.emplace(files);
    EXPECT_TRUE(limits->concernsMachine());
}

TEST_F(FirmwareLimitsTest, WritesOnlyWhatHasChanged) {
    look(100, true);
    EXPECT_TRUE(files.replacedPaths.empty()) << "there is nothing to remember";
    look(80);
    look(80);
    look(80, true);
    EXPECT_EQ(files.replacedPaths.size(), 1U);
    look(100);
    EXPECT_EQ(files.files.at(path), "");
}

TEST_F(FirmwareLimitsTest, WritesAgainWhatCouldNotBeWritten) {
    files.refusesWrites = true;
    look(80, true);
    look(80);
    EXPECT_EQ(files.replacedPaths.size(), 2U);
    files.refusesWrites = false;
    look(80);
    EXPECT_EQ(files.files.at(path), "80 57000 X\n");
    look(80);
    EXPECT_EQ(files.replacedPaths.size(), 3U);
}

TEST_F(FirmwareLimitsTest, LoadsWithoutWaiting) {
    files.files[path] = "80 57000 X\n";
    files.holdsLoads = true;
    limits.emplace(files);
    EXPECT_FALSE(limits->isLoaded());
    bool told = false;
    limits->onLoad = [&] { told = true; };
    files.heldLoads.at(0)();
    EXPECT_TRUE(told);
    EXPECT_TRUE(limits->concernsMachine());
}

TEST_F(FirmwareLimitsTest, MayBeGoneWhenTheDiskAnswers) {
    files.holdsLoads = true;
    limits.emplace(files);
    limits.reset();
    files.heldLoads.at(0)();
    limits.emplace(files);
    files.holdsUpdates = true;
    look(80, true);
    limits.reset();
    files.heldUpdates.at(0)();
    EXPECT_EQ(files.files.at(path), "80 57000 X\n");
}

} // namespace
