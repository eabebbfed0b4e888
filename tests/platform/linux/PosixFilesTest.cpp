// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/PosixFiles.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class PosixFilesTest : public testing::Test {
protected:
    TemporaryFolder home;
    PosixFiles files{home.path / "data"};

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
    EXPECT_FALSE(files.replace(file, "one"));
    EXPECT_FALSE(files.replace(file, "two"));
    EXPECT_EQ(contentOf(file), "two");
    EXPECT_EQ(permissions(file), 0600U);
    EXPECT_EQ(entries(file.parent_path()), 1U);
}

TEST_F(PosixFilesTest, WritesAnyBytes) {
    const std::string content = std::string("\0\xFF\n", 3) + std::string(200000, 'x');
    EXPECT_FALSE(files.replace(home.path / "file", content));
    EXPECT_EQ(contentOf(home.path / "file"), content);
}

TEST_F(PosixFilesTest, FollowsALinkAndKeepsIt) {
    fs::create_directory(home.path / "elsewhere");
    write(home.path / "elsewhere/real", "old");
    fs::create_symlink("elsewhere/real", home.path / "first");
    fs::create_symlink(home.path / "first", home.path / "link");
    EXPECT_FALSE(files.replace(home.path / "link", "new"));
    EXPECT_TRUE(fs::is_symlink(home.path / "link"));
    EXPECT_TRUE(fs::is_symlink(home.path / "first"));
    EXPECT_EQ(contentOf(home.path / "elsewhere/real"), "new");
}

TEST_F(PosixFilesTest, MakesWhatADanglingLinkLeadsTo) {
    fs::create_symlink("not/there/yet", home.path / "link");
    EXPECT_FALSE(files.replace(home.path / "link", "new"));
    EXPECT_TRUE(fs::is_symlink(home.path / "link"));
    EXPECT_EQ(contentOf(home.path / "not/there/yet"), "new");
}

TEST_F(PosixFilesTest, SurvivesARingOfLinks) {
    fs::create_symlink("b", home.path / "a");
    fs::create_symlink("a", home.path / "b");
    EXPECT_EQ(PosixFiles::linkTarget(home.path / "a"), home.path / "a");
    EXPECT_FALSE(files.read(home.path / "a", 100));
    EXPECT_FALSE(files.replace(home.path / "a", "new")); // the ring led nowhere
    EXPECT_EQ(contentOf(home.path / "a"), "new");
}

TEST_F(PosixFilesTest, FailsWithoutATraceWhereAFolderIs) {
    fs::create_directories(home.path / "file/inside");
    EXPECT_EQ(files.replace(home.path / "file", "new"), std::errc::is_a_directory);
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
    EXPECT_FALSE(files.read(home.path / "pipe", 100)); // and does not wait for a writer
    EXPECT_FALSE(files.read("/dev/zero", 100));
}
