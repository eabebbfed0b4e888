// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/PosixFiles.h"

#include "platform/linux/session/TerminationSignals.h"
#include "support/DiskFaults.h"
#include "support/OrdinaryUser.h"
#include "support/SmallDisk.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

class PosixFilesTest : public testing::Test {
protected:
    TemporaryFolder home;
    PosixFiles files{home.path / "data"};

    std::error_code replace(const fs::path& file, std::string content) {
        std::error_code result;
        files.update(
            file, 0, [&](const auto&) { return std::move(content); }, [&](std::error_code error) { result = error; });
        return result;
    }
    static unsigned permissions(const fs::path& path) {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }
    static std::size_t entries(const fs::path& folder) {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }
};

} // namespace

TEST_F(PosixFilesTest, MakesFoldersForTheOwnerOnly) {
    EXPECT_TRUE(files.createFolder(home.path / "a/b/c"));
    EXPECT_EQ(permissions(home.path / "a"), 0700U);
    EXPECT_EQ(permissions(home.path / "a/b/c"), 0700U);
    EXPECT_TRUE(files.createFolder(home.path / "a/b/c"));
}

TEST_F(PosixFilesTest, MakesNoFolderWhereAFileIs) {
    write(home.path / "a", "x");
    EXPECT_FALSE(files.createFolder(home.path / "a"));
    EXPECT_FALSE(files.createFolder(home.path / "a/b"));
}

TEST_F(PosixFilesTest, ReplacesAFileForTheOwnerOnlyAndLeavesNothingElse) {
    const fs::path file = home.path / "new/folder/file";
    EXPECT_FALSE(replace(file, "one"));
    EXPECT_FALSE(replace(file, "two"));
    EXPECT_EQ(contentOf(file), "two");
    EXPECT_EQ(permissions(file), 0600U);
    EXPECT_EQ(entries(file.parent_path()), 1U);
}

TEST_F(PosixFilesTest, WritesAnyBytes) {
    const std::string content = std::string("\0\xFF\n", 3) + std::string(200000, 'x');
    EXPECT_FALSE(replace(home.path / "file", content));
    EXPECT_EQ(contentOf(home.path / "file"), content);
}

TEST_F(PosixFilesTest, FollowsALinkAndKeepsIt) {
    fs::create_directory(home.path / "elsewhere");
    write(home.path / "elsewhere/real", "old");
    fs::create_symlink("elsewhere/real", home.path / "first");
    fs::create_symlink(home.path / "first", home.path / "link");
    EXPECT_FALSE(replace(home.path / "link", "new"));
    EXPECT_TRUE(fs::is_symlink(home.path / "link"));
    EXPECT_TRUE(fs::is_symlink(home.path / "first"));
    EXPECT_EQ(contentOf(home.path / "elsewhere/real"), "new");
}

TEST_F(PosixFilesTest, MakesWhatADanglingLinkLeadsTo) {
    fs::create_symlink("not/there/yet", home.path / "link");
    EXPECT_FALSE(replace(home.path / "link", "new"));
    EXPECT_TRUE(fs::is_symlink(home.path / "link"));
    EXPECT_EQ(contentOf(home.path / "not/there/yet"), "new");
}

TEST_F(PosixFilesTest, SurvivesARingOfLinks) {
    fs::create_symlink("b", home.path / "a");
    fs::create_symlink("a", home.path / "b");
    EXPECT_EQ(PosixFiles::linkTarget(home.path / "a"), home.path / "a");
    EXPECT_FALSE(files.read(home.path / "a", 100));
    EXPECT_FALSE(replace(home.path / "a", "new")); // the ring leads to no file, so the link itself is replaced
    EXPECT_EQ(contentOf(home.path / "a"), "new");
}

TEST_F(PosixFilesTest, FailsWithoutATraceWhereAFolderIs) {
    fs::create_directories(home.path / "file/inside");
    EXPECT_EQ(replace(home.path / "file", "new"), std::errc::is_a_directory);
    EXPECT_TRUE(fs::is_directory(home.path / "file/inside"));
    EXPECT_EQ(entries(home.path), 1U);
}

TEST_F(PosixFilesTest, ReadsAWholeFileUpToTheLimit) {
    write(home.path / "file", "12345");
    EXPECT_EQ(files.read(home.path / "file", 5), "12345");
    EXPECT_FALSE(files.read(home.path / "file", 4));
    write(home.path / "empty", "");
    EXPECT_EQ(files.read(home.path / "empty", 5), "");
}

TEST_F(PosixFilesTest, ReadsNothingButRegularFiles) {
    EXPECT_FALSE(files.read(home.path / "missing", 100));
    EXPECT_FALSE(files.read(home.path, 100));
    ASSERT_EQ(::mkfifo((home.path / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(files.read(home.path / "pipe", 100)); // nor does it wait for a writer
    EXPECT_FALSE(files.read("/dev/zero", 100));
}

TEST_F(PosixFilesTest, ReadsNoMoreThanTheLimitOfAFileThatIsLargerThanItSays) {
    ASSERT_EQ(fs::file_size("/proc/self/maps"), 0U);
    EXPECT_FALSE(files.read("/proc/self/maps", 100));
    EXPECT_TRUE(files.read("/proc/self/maps", 100'000'000));
}

TEST_F(PosixFilesTest, TakesNoMemoryForAFileBeyondTheLimit) {
    write(home.path / "file", "x");
    fs::resize_file(home.path / "file", std::uintmax_t{1} << 40); // larger than the memory
    EXPECT_FALSE(files.read(home.path / "file", std::size_t{64} << 20));
}

TEST_F(PosixFilesTest, TakesPermissionsFromOthersThatTheyHad) {
    write(home.path / "file", "old");
    fs::permissions(home.path / "file", fs::perms(0644));
    EXPECT_FALSE(replace(home.path / "file", "new"));
    EXPECT_EQ(permissions(home.path / "file"), 0600U);
}

TEST_F(PosixFilesTest, LeavesADocumentOpenToWhomItWas) {
    write(home.path / "file", "old");
    for (const unsigned mode : {0644U, 0640U, 0604U}) {
        fs::permissions(home.path / "file", fs::perms(mode));
        EXPECT_FALSE(files.saveDocument(home.path / "file", "new"));
        EXPECT_EQ(permissions(home.path / "file"), mode);
    }
    EXPECT_EQ(contentOf(home.path / "file"), "new");
}

TEST_F(PosixFilesTest, MakesANewDocumentAsTheUsersProgramsDo) {
    const mode_t before = ::umask(027);
    EXPECT_FALSE(files.saveDocument(home.path / "file", "new"));
    EXPECT_EQ(::umask(before), 027U);
    EXPECT_EQ(permissions(home.path / "file"), 0640U);
}

TEST_F(PosixFilesTest, MakesNoFolderForADocument) {
    EXPECT_EQ(files.saveDocument(home.path / "mistyped/file", "new"), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(fs::exists(home.path / "mistyped"));
}

TEST_F(PosixFilesTest, FollowsALinkToADocument) {
    write(home.path / "there", "old");
    fs::create_symlink(home.path / "there", home.path / "link");
    EXPECT_FALSE(files.saveDocument(home.path / "link", "new"));
    EXPECT_TRUE(fs::is_symlink(home.path / "link"));
    EXPECT_EQ(contentOf(home.path / "there"), "new");
}

TEST_F(PosixFilesTest, PutsNoFileInThePlaceOfWhatIsNone) {
    ASSERT_EQ(::mkfifo((home.path / "pipe").c_str(), 0600), 0);
    fs::create_symlink(home.path / "pipe", home.path / "link");
    for (const char* name : {"pipe", "link"}) {
        EXPECT_EQ(replace(home.path / name, "x"), std::errc::operation_not_supported);
        EXPECT_EQ(files.saveDocument(home.path / name, "x"), std::errc::operation_not_supported);
    }
    EXPECT_TRUE(fs::is_fifo(home.path / "pipe"));
}

TEST_F(PosixFilesTest, MakesAFolderAnewThatWasDeleted) {
    const fs::path file = home.path / "data/Velmora/file";
    EXPECT_FALSE(replace(file, "one"));
    fs::remove_all(home.path / "data");
    EXPECT_FALSE(replace(file, "two"));
    EXPECT_EQ(contentOf(file), "two");
    EXPECT_EQ(permissions(file.parent_path()), 0700U);
}

TEST_F(PosixFilesTest, ReplacesAtOnceWithoutWaitingForTheDisk) {
    DiskFaults faults;
    faults.syncs = {EIO};
    EXPECT_FALSE(files.replaceNow(home.path / "new/file", "one"));
    EXPECT_EQ(contentOf(home.path / "new/file"), "one");
    EXPECT_EQ(faults.syncs.size(), 1U);
    files.sync(home.path / "new/file");
    EXPECT_TRUE(faults.syncs.empty());
    EXPECT_EQ(files.replaceNow(home.path, "two"), std::errc::is_a_directory);
}

TEST_F(PosixFilesTest, ChangesAFileByWhatItHolds) {
    const fs::path file = home.path / "file";
    std::vector<std::error_code> results;
    std::vector<std::optional<std::string>> found;
    const auto changeTo = [&](std::optional<std::string> next) {
        files.update(
            file, 3,
            [&](std::optional<std::string> present) {
                found.push_back(std::move(present));
                return next;
            },
            [&](std::error_code error) { results.push_back(error); });
    };
    changeTo("one");
    changeTo("four");
    changeTo("two");
    changeTo(std::nullopt);
    EXPECT_EQ(found, (std::vector<std::optional<std::string>>{std::nullopt, "one", std::nullopt, "two"}))
        << "more than three bytes are too many";
    EXPECT_EQ(results, (std::vector<std::error_code>{{}, {}, {}, std::make_error_code(std::errc::operation_canceled)}));
    EXPECT_EQ(contentOf(file), "two");
}

TEST_F(PosixFilesTest, LetsOneProcessAtATimeChangeAFileByWhatItHolds) {
    constexpr int times = 50;
    const auto count = [this] {
        PosixFiles own(home.path);
        for (int i = 0; i < times; ++i)
            own.update(home.path / "count", 10,
                       [](const std::optional<std::string>& present) {
                           return std::to_string(std::stoi(present.value_or("0")) + 1);
                       },
                       {});
    };
    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        count();
        ::_exit(0);
    }
    count();
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(contentOf(home.path / "count"), std::to_string(2 * times));
}

TEST_F(PosixFilesTest, LetsTheFirstThatAsksHaveAFolderUntilItEnds) {
    PosixFiles second(home.path);
    const fs::path file = home.path / "folder/file";
    {
        PosixFiles first(home.path);
        EXPECT_TRUE(first.claim(file));
        EXPECT_TRUE(first.claim(file));
        EXPECT_FALSE(second.claim(file));
        EXPECT_FALSE(second.claim(home.path / "folder/another"));
        EXPECT_TRUE(second.claim(home.path / "elsewhere"));
        const auto noChange = [](const auto&) { return std::nullopt; };
        first.update(file, 100, noChange, {}); // does not wait for itself
        fs::remove_all(home.path / "folder");
        EXPECT_TRUE(second.claim(file)) << "it is another folder now";
        EXPECT_FALSE(first.claim(file));
        fs::remove_all(home.path / "folder");
        EXPECT_TRUE(first.claim(file));
        EXPECT_FALSE(second.claim(file));
    }
    EXPECT_TRUE(second.claim(file));
}

TEST_F(PosixFilesTest, TellsWhatOthersPutInAFilesPlaceAndNotWhatItPutsThereItself) {
    const fs::path file = home.path / "folder/file";
    fs::create_directory(home.path / "folder");
    PosixFiles other(home.path);
    int ours = 0, theirs = 0;
    const Subscription own = files.onChange(file, [&] { ++ours; });
    const Subscription foreign = other.onChange(file, [&] { ++theirs; });
    EXPECT_FALSE(replace(file, "one"));
    ASSERT_TRUE(waitUntil([&] { return theirs > 0; }));
    EXPECT_EQ(ours, 0);
    other.replace(file, "two");
    ASSERT_TRUE(waitUntil([&] { return ours > 0; }));
    ours = 0;
    fs::remove_all(home.path / "folder");
    ASSERT_TRUE(waitUntil([&] { return ours > 0; }));
    ours = 0;
    other.replace(file, "three");
    ASSERT_TRUE(waitUntil([&] { return ours > 0; })) << "also in a new folder";
}

TEST_F(PosixFilesTest, ReplacesAFileWithTheLongestPossibleName) {
    const fs::path file = home.path / std::string(255, 'x');
    EXPECT_FALSE(replace(file, "one"));
    EXPECT_FALSE(replace(file, "two"));
    EXPECT_EQ(contentOf(file), "two");
    EXPECT_EQ(entries(home.path), 1U);
}

namespace {

/// An ordinary user, and a file that exists and can be replaced. A failure must leave that file as it was and no other
/// file beside it, and the next attempt must work.
class PosixFilesFailureTest : public PosixFilesTest {
protected:
    fs::path folder = home.path / "folder";
    fs::path file = folder / "file";
    std::string large = std::string(200'000, 'x');

    PosixFilesFailureTest() {
        fs::create_directory(folder);
        write(file, "old");
        user_.emplace(home.path);
    }

    void expectUntouched() {
        EXPECT_EQ(contentOf(file), "old");
        EXPECT_EQ(entries(folder), 1U);
    }
    void expectWorks(const std::string& content = "new") {
        EXPECT_EQ(replace(file, content), std::error_code());
        EXPECT_EQ(contentOf(file), content);
        EXPECT_EQ(entries(folder), 1U);
    }

private:
    std::optional<OrdinaryUser> user_;
};

} // namespace

TEST_F(PosixFilesFailureTest, TellsEveryErrorOfTheDisk) {
    for (const int error : {ENOSPC, EDQUOT, EIO, EFBIG}) {
        const std::error_code expected(error, std::system_category());
        for (const bool isLate : {false, true}) {
            SCOPED_TRACE(expected.message() + (isLate ? ", late" : ""));
            write(file, "old");
            DiskFaults faults;
            if (isLate)
                faults.writes.push_back({.error = 0, .most = 1000});
            faults.writes.push_back({.error = error});
            EXPECT_EQ(replace(file, large), expected);
            expectUntouched();
            faults.syncs = {error};
            EXPECT_EQ(replace(file, large), expected);
            expectUntouched();
            expectWorks();
        }
    }
}

TEST_F(PosixFilesFailureTest, TellsWhenItIsNotSureThatTheNewNameIsOnTheDisk) {
    DiskFaults faults;
    faults.syncs = {0, EIO}; // of the file, of its folder
    EXPECT_EQ(replace(file, "new"), std::errc::io_error);
    EXPECT_EQ(entries(folder), 1U);
    expectWorks("newer");
}

TEST_F(PosixFilesFailureTest, WorksWhereAFolderCannotBeSynchronised) {
    DiskFaults faults;
    faults.syncs = {0, EINVAL};
    expectWorks();
}

TEST_F(PosixFilesFailureTest, WorksWhereAFolderMayNotBeRead) {
    fs::permissions(folder, fs::perms::owner_write | fs::perms::owner_exec);
    EXPECT_FALSE(replace(file, "new"));
    EXPECT_EQ(contentOf(file), "new");
}

TEST_F(PosixFilesFailureTest, GoesOnAfterInterruptionsAndShortWrites) {
    DiskFaults faults;
    faults.writes = {{.error = EINTR}, {.error = 0, .most = 1},     {.error = EINTR},
                     {.error = EINTR}, {.error = 0, .most = 99999}, {.error = 0, .most = 3}};
    faults.syncs = {EINTR, 0, EINTR};
    expectWorks("start" + large + "end");
    EXPECT_TRUE(faults.writes.empty());
    EXPECT_TRUE(faults.syncs.empty());
}

TEST_F(PosixFilesFailureTest, SurvivesALimitOfTheFileSize) {
    EXPECT_TRUE(inChild([this] {
        const TerminationSignals signals; // as in the program; otherwise the limit kills the process
        limitFileSize(100'000);
        EXPECT_EQ(replace(file, large), std::errc::file_too_large);
        expectUntouched();
        expectWorks(std::string(100'000, 'y'));
    }));
}

// Where the system does not let a test mount a file system, a limit on the file size takes its place.
TEST_F(PosixFilesTest, SurvivesAFullDisk) {
    fs::create_directory(home.path / "disk");
    EXPECT_TRUE(inChild([this] {
        const TerminationSignals signals;
        if (!mountSmallDisk(home.path / "disk", 128 * 1024))
            limitFileSize(100 * 1024);
        const OrdinaryUser user(home.path);
        const fs::path file = home.path / "disk/folder/file";
        EXPECT_FALSE(replace(file, "old"));
        const std::error_code error = replace(file, std::string(200 * 1024, 'x'));
        EXPECT_TRUE(error == std::errc::no_space_on_device || error == std::errc::file_too_large) << error.message();
        EXPECT_EQ(contentOf(file), "old");
        EXPECT_EQ(entries(file.parent_path()), 1U);
        EXPECT_FALSE(replace(file, std::string(50 * 1024, 'y')));
        EXPECT_EQ(contentOf(file), std::string(50 * 1024, 'y'));
    }));
}

TEST_F(PosixFilesFailureTest, TellsThatAFolderMayNotBeWritten) {
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(replace(file, "new"), std::errc::permission_denied);
    EXPECT_EQ(replace(folder / "deeper/file", "new"), std::errc::permission_denied);
    EXPECT_FALSE(files.createFolder(folder / "deeper"));
    expectUntouched();
    fs::permissions(folder, fs::perms::owner_all);
    expectWorks();
}

TEST_F(PosixFilesFailureTest, TellsThatAFolderMayNotBeEntered) {
    fs::permissions(folder, fs::perms::none);
    EXPECT_EQ(replace(file, "new"), std::errc::permission_denied);
    EXPECT_FALSE(files.read(file, 100));
    fs::permissions(folder, fs::perms::owner_all);
    expectUntouched();
    expectWorks();
}

TEST_F(PosixFilesFailureTest, TellsThatAFileIsInTheFoldersPlace) {
    EXPECT_EQ(replace(file / "file", "new"), std::errc::not_a_directory);
    EXPECT_EQ(replace(file / "deeper/file", "new"), std::errc::not_a_directory);
    expectUntouched();
}

TEST_F(PosixFilesFailureTest, ReplacesAFileThatItMayNotReadOrWrite) {
    fs::permissions(file, fs::perms::none);
    EXPECT_FALSE(files.read(file, 100));
    expectWorks();
}

namespace {

class PosixFilesLeftoversTest : public PosixFilesTest {
protected:
    fs::path folder = home.path / "folder";
    fs::path file = folder / "history.json";
    fs::path leftover = folder / ".history.json.velmora-Ab3xY9";

    PosixFilesLeftoversTest() { fs::create_directory(folder); }
};

} // namespace

TEST_F(PosixFilesLeftoversTest, AreRemoved) {
    write(file, "content");
    write(leftover, "half");
    write(folder / ".history.json.velmora-000000", "");
    files.removeLeftovers(file);
    EXPECT_EQ(contentOf(file), "content");
    EXPECT_EQ(entries(folder), 1U);
}

// Real leftovers come from processes that were killed while writing, like this one.
TEST_F(PosixFilesLeftoversTest, OfAProcessThatWasKilledAreRemoved) {
    EXPECT_FALSE(inChild([this] {
        DiskFaults faults;
        faults.beforeWrite = [] { ::raise(SIGKILL); };
        static_cast<void>(replace(file, "content"));
    }));
    EXPECT_EQ(entries(folder), 1U);
    files.removeLeftovers(file);
    EXPECT_EQ(entries(folder), 0U);
}

TEST_F(PosixFilesLeftoversTest, AreRemovedBesideTheTargetOfALink) {
    write(leftover, "half");
    fs::create_symlink("folder/history.json", home.path / "link");
    files.removeLeftovers(home.path / "link");
    EXPECT_FALSE(fs::exists(leftover));
}

TEST_F(PosixFilesLeftoversTest, AreToldFromEverythingElse) {
    const char* others[] = {"history.json",
                            ".history.json",
                            ".history.json.Ab3xY9",
                            ".history.json.velmora-",
                            ".history.json.velmora-Ab3xY",
                            ".history.json.velmora-Ab3xY99",
                            ".history.json.velmora-Ab3x_9",
                            ".history.json.velmora-Ab3x\xC3\xA9",
                            ".defaults.json.velmora-Ab3xY9",
                            "x.history.json.velmora-Ab3xY9",
                            "history.json.velmora-Ab3xY9",
                            ".history.json.Velmora-Ab3xY9"};
    for (const char* name : others)
        write(folder / name, "x");
    // The right name, but the wrong kind of file.
    fs::create_directory(folder / ".history.json.velmora-folder");
    fs::create_symlink("history.json", folder / ".history.json.velmora-linked");
    ASSERT_EQ(::mkfifo((folder / ".history.json.velmora-piping").c_str(), 0600), 0);
    const std::size_t before = entries(folder);
    files.removeLeftovers(file);
    EXPECT_EQ(entries(folder), before);
    EXPECT_EQ(contentOf(file), "x");
}

TEST_F(PosixFilesLeftoversTest, OfAnotherUserStay) {
    write(leftover, "half");
    const bool isAnothers = ::chown(leftover.c_str(), 65533, 65533) == 0; // only root can give a file away
    files.removeLeftovers(file);
    EXPECT_EQ(fs::exists(leftover), isAnothers);
}

TEST_F(PosixFilesLeftoversTest, NeedNoFolder) {
    files.removeLeftovers(home.path / "missing/history.json");
    files.removeLeftovers("/");
    EXPECT_EQ(entries(home.path), 1U);
}

TEST_F(PosixFilesLeftoversTest, AreNotTakenForWhatIsBeingWritten) {
    DiskFaults faults;
    int calls = 0;
    faults.beforeWrite = [&] {
        ++calls;
        files.removeLeftovers(file);
        EXPECT_EQ(entries(folder), 1U);
    };
    EXPECT_FALSE(replace(file, "content"));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(contentOf(file), "content");
}

// Between its creation and its lock, a temporary file looks like a leftover.
TEST_F(PosixFilesLeftoversTest, CostNoWriterItsFile) {
    DiskFaults faults;
    bool wasThere = false;
    faults.beforeLock = [&] {
        wasThere = entries(folder) == 1;
        files.removeLeftovers(file);
        EXPECT_EQ(entries(folder), 0U);
    };
    EXPECT_FALSE(replace(file, "content"));
    EXPECT_TRUE(wasThere);
    EXPECT_EQ(contentOf(file), "content");
    EXPECT_EQ(entries(folder), 1U);
}

TEST_F(PosixFilesLeftoversTest, AreRemovedWhileAnotherProcessWrites) {
    const pid_t writer = ::fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
        bool works = true;
        for (int i = 0; i < 100; ++i)
            works = works && !replace(file, std::to_string(i));
        ::_exit(works ? 0 : 1);
    }
    int status = -1;
    pid_t ended = 0;
    while ((ended = ::waitpid(writer, &status, WNOHANG)) == 0)
        files.removeLeftovers(file);
    EXPECT_EQ(ended, writer);
    EXPECT_EQ(status, 0) << "a write failed";
    EXPECT_EQ(contentOf(file), "99");
    EXPECT_EQ(entries(folder), 1U);
}
