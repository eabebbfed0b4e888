// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/BackgroundFiles.h"

#include "platform/linux/session/QtMainLoop.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

class BackgroundFilesTest : public testing::Test {
protected:
    TemporaryFolder home;
    fs::path file = home.path / "folder/file";
    QtMainLoop loop;
    PosixFiles disk{home.path};
    std::promise<void> gate; ///< the disk is stuck until it is opened
    std::shared_future<void> opened = gate.get_future().share();
    std::unique_ptr<BackgroundFiles> files = std::make_unique<BackgroundFiles>(disk, loop);

    /// Replaces the file; the first attempt is stuck after it has been told to begin.
    void replaceSlowly(const std::string& content) {
        const auto isFirst = std::make_shared<std::atomic<bool>>(true);
        const auto reached = std::make_shared<std::promise<void>>();
        files->update(file, 0,
                      [=, this](const auto&) {
                          if (isFirst->exchange(false)) {
                              reached->set_value();
                              opened.wait();
                          }
                          return content;
                      },
                      {});
        reached->get_future().wait();
    }
};

} // namespace

TEST_F(BackgroundFilesTest, LoadsElsewhereAndTellsOnTheMainThread) {
    write(home.path / "file", "content");
    const auto here = std::this_thread::get_id();
    std::optional<std::string> found;
    std::thread::id decoded, told;
    files->load(home.path / "file", 100, [&](std::optional<std::string> content) {
        decoded = std::this_thread::get_id();
        return [&, content] {
            told = std::this_thread::get_id();
            found = content;
        };
    });
    EXPECT_FALSE(found);
    ASSERT_TRUE(waitUntil([&] { return found.has_value(); }));
    EXPECT_EQ(found, "content");
    EXPECT_EQ(told, here);
    EXPECT_NE(decoded, here);
}

TEST_F(BackgroundFilesTest, WritesTheNewestContentOnlyAndHoldsNothingUp) {
    replaceSlowly("one");
    std::vector<std::string> told;
    files->update(
        file, 0, [](const auto&) { return "two"; }, [&](std::error_code) { told.push_back("two"); });
    files->update(
        file, 0, [](const auto&) { return "three"; }, [&](std::error_code) { told.push_back("three"); });
    files->update(
        home.path, 0, [](const auto&) { return ""; }, [&](std::error_code error) { told.push_back(error.message()); });
    EXPECT_FALSE(fs::exists(file));
    gate.set_value();
    ASSERT_TRUE(waitUntil([&] { return told.size() == 2; }));
    EXPECT_EQ(contentOf(file), "three");
    EXPECT_EQ(told, (std::vector<std::string>{"three", "Is a directory"}));
}

TEST_F(BackgroundFilesTest, ReplacesAtOnceEvenIfTheDiskIsStuck) {
    replaceSlowly("one");
    EXPECT_FALSE(files->replaceNow(home.path / "other", "here"));
    EXPECT_EQ(contentOf(home.path / "other"), "here");
    EXPECT_EQ(files->replaceNow(home.path, "here"), std::errc::is_a_directory);
    gate.set_value();
    EXPECT_TRUE(files->finish(10s));
}

TEST_F(BackgroundFilesTest, PutsTheNewestContentInPlaceWithoutADiskThatIsStuck) {
    replaceSlowly("one");
    files->replace(file, "two");
    files->updateAtEnd(home.path / "other", 0, [](const auto&) { return "at the end"; });
    files->updateAtEndNow();
    EXPECT_FALSE(files->finish(10ms));
    EXPECT_EQ(contentOf(file), "two");
    EXPECT_EQ(contentOf(home.path / "other"), "at the end");
    gate.set_value();
    files.reset();
    EXPECT_EQ(contentOf(file), "two") << "what was stuck must not come after it";
}

TEST_F(BackgroundFilesTest, NeedsNoEndThatWasNotReached) {
    files->updateAtEnd(file, 100, [](const auto&) { return "at the end"; });
    files->replace(file, "in time");
    files->updateAtEndNow();
    EXPECT_TRUE(files->finish(10s));
    EXPECT_EQ(contentOf(file), "in time");
    files->updateAtEnd(file, 100, [](std::optional<std::string> content) { return *content + ", at the end"; });
    files->updateAtEndNow();
    EXPECT_TRUE(files->finish(10s));
    EXPECT_EQ(contentOf(file), "in time, at the end");
}

TEST_F(BackgroundFilesTest, RunsATaskAfterWhatWasAskedForBefore) {
    replaceSlowly("one");
    int tasks = 0;
    bool wasThere = false;
    const auto lock = std::make_shared<int>(); // as a task may hold one
    files->afterUpdates(Duration(1000), [&, lock] {
        ++tasks;
        wasThere = fs::exists(file);
    });
    QCoreApplication::processEvents();
    EXPECT_EQ(tasks, 0);
    EXPECT_GT(lock.use_count(), 1);
    gate.set_value();
    ASSERT_TRUE(waitUntil([&] { return tasks > 0; }));
    EXPECT_TRUE(wasThere);
    EXPECT_EQ(lock.use_count(), 1);
}

TEST_F(BackgroundFilesTest, RunsSuchATaskAfterTheLimitAndOnce) {
    replaceSlowly("one");
    int tasks = 0;
    files->afterUpdates(Duration(0.01), [&] { ++tasks; });
    ASSERT_TRUE(waitUntil([&] { return tasks > 0; }));
    EXPECT_FALSE(fs::exists(file));
    gate.set_value();
    EXPECT_TRUE(files->finish(10s));
    QCoreApplication::processEvents();
    EXPECT_EQ(tasks, 1);
}
