// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/JsonUserDefaults.h"

#include "platform/linux/files/PosixFiles.h"
#include "platform/linux/session/QtMainLoop.h"
#include "support/DiskFaults.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryFolder.h"
#include "support/UserDefaultsContract.h"
#include "support/WaitUntil.h"

#include <QJsonDocument>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <memory>

namespace fs = std::filesystem;

namespace {

class JsonUserDefaultsTest : public testing::Test {
protected:
    TemporaryFolder home;
    PosixFiles files{home.path};
    QtMainLoop loop;
    fs::path file = home.path / "config/Velmora/defaults.json";

    JsonUserDefaultsTest() { fs::create_directories(file.parent_path()); }

    std::unique_ptr<JsonUserDefaults> store() { return std::make_unique<JsonUserDefaults>(file, files, loop); }

    std::unique_ptr<JsonUserDefaults> storeWith(const std::string& content) {
        write(file, content);
        return store();
    }

    QJsonObject stored() const { return QJsonDocument::fromJson(QByteArray::fromStdString(contentOf(file))).object(); }
};

/// Counts the announcements of a store.
class Announcements {
public:
    explicit Announcements(UserDefaults& store) : subscription_(store.onChange([this] { ++count; })) {}
    int count = 0;

private:
    Subscription subscription_;
};

/// Waits for everything that is queued or on its way through the kernel: a change made now is announced after all
/// earlier ones.
void settle(JsonUserDefaults& store, Announcements& announcements) {
    const int before = announcements.count;
    store.setObject("settled", true);
    ASSERT_TRUE(waitUntil([&] { return announcements.count > before; }));
    announcements.count = before;
}

} // namespace

TEST_F(JsonUserDefaultsTest, ReadsEachKindOfValue) {
    const auto defaults = storeWith(R"({"flag": true, "whole": 80, "same": 80.0, "text": "Glass", "real": 1.5})");
    EXPECT_TRUE(defaults->boolForKey("flag"));
    EXPECT_EQ(defaults->integerForKey("whole"), 80);
    EXPECT_EQ(defaults->integerForKey("same"), 80);
    EXPECT_EQ(defaults->stringForKey("text"), "Glass");
    EXPECT_EQ(defaults->doubleForKey("real"), 1.5);
    EXPECT_EQ(defaults->doubleForKey("whole"), 80.0);
}

TEST_F(JsonUserDefaultsTest, TakesAValueOfAnotherKindAsAbsent) {
    const auto defaults = storeWith(
        R"({"flag": 1, "other": "true", "whole": "80", "part": 80.5, "yes": true, "text": 5, "list": [1], "null": null,
            "huge": 1e300})");
    defaults->registerDefaults({{"flag", true}, {"whole", 7}, {"part", 8}, {"yes", 9}, {"text", "x"}, {"huge", 3}});
    EXPECT_TRUE(defaults->boolForKey("flag"));
    EXPECT_FALSE(defaults->boolForKey("other"));
    EXPECT_EQ(defaults->integerForKey("whole"), 7);
    EXPECT_EQ(defaults->integerForKey("part"), 8);
    EXPECT_EQ(defaults->integerForKey("yes"), 9);
    EXPECT_EQ(defaults->integerForKey("huge"), 3);
    EXPECT_EQ(defaults->stringForKey("text"), "x");
    EXPECT_EQ(defaults->integerForKey("list"), 0);
    EXPECT_EQ(defaults->stringForKey("null"), std::nullopt);
}

TEST_F(JsonUserDefaultsTest, ReadsMissingKeysAsTheirFallbackOrNothing) {
    const auto defaults = store();
    EXPECT_FALSE(defaults->boolForKey("x"));
    EXPECT_EQ(defaults->integerForKey("x"), 0);
    EXPECT_EQ(defaults->doubleForKey("x"), 0.0);
    EXPECT_EQ(defaults->stringForKey("x"), std::nullopt);
    defaults->registerDefaults({{"x", 5}});
    EXPECT_EQ(defaults->integerForKey("x"), 5);
    EXPECT_FALSE(fs::exists(file)) << "fallbacks are never stored";
}

TEST_F(JsonUserDefaultsTest, StoresAtOnceWithoutFallbacksAndKeepsWhatItDoesNotKnow) {
    const auto defaults = storeWith(R"({"stranger": {"deep": [1, 2]}, "limit": 70})");
    defaults->registerDefaults({{"low", 20}});
    defaults->setObject("limit", 85);
    EXPECT_EQ(defaults->integerForKey("limit"), 85);
    EXPECT_EQ(stored(), QJsonDocument::fromJson(R"({"stranger": {"deep": [1, 2]}, "limit": 85})").object());
    EXPECT_EQ(store()->integerForKey("limit"), 85);
}

TEST_F(JsonUserDefaultsTest, KeepsADoubleExactly) {
    store()->setObject("snoozeUntil", 1731650000.123456);
    EXPECT_EQ(store()->doubleForKey("snoozeUntil"), 1731650000.123456);
}

TEST_F(JsonUserDefaultsTest, LosesNoKeyOfAnotherWriter) {
    const auto one = store();
    const auto two = store();
    one->setObject("a", 1);
    two->setObject("b", 2);
    one->setObject("c", 3);
    EXPECT_EQ(stored(), QJsonDocument::fromJson(R"({"a": 1, "b": 2, "c": 3})").object());
}

TEST_F(JsonUserDefaultsTest, AnnouncesAnOwnWriteOnceOnALaterTurn) {
    const auto defaults = store();
    Announcements announcements(*defaults);
    defaults->setObject("limit", 85);
    EXPECT_EQ(announcements.count, 0);
    ASSERT_TRUE(waitUntil([&] { return announcements.count > 0; }));
    settle(*defaults, announcements);
    EXPECT_EQ(announcements.count, 1);
}

TEST_F(JsonUserDefaultsTest, AnnouncesAForeignEditInPlaceOnce) {
    const auto defaults = storeWith(R"({"showTime": false})");
    Announcements announcements(*defaults);
    write(file, R"({"showTime": true})");
    ASSERT_TRUE(waitUntil([&] { return announcements.count > 0; }));
    EXPECT_TRUE(defaults->boolForKey("showTime"));
    settle(*defaults, announcements);
    EXPECT_EQ(announcements.count, 1);
}

TEST_F(JsonUserDefaultsTest, AnnouncesAForeignEditByRenameAndTheNextOneToo) {
    const auto defaults = store();
    Announcements announcements(*defaults);
    for (int limit = 1; limit <= 3; ++limit) {
        write(home.path / "new", R"({"limit": )" + std::to_string(limit) + "}");
        fs::rename(home.path / "new", file);
        ASSERT_TRUE(waitUntil([&] { return announcements.count == limit; }));
        EXPECT_EQ(defaults->integerForKey("limit"), limit);
    }
}

TEST_F(JsonUserDefaultsTest, FollowsAFileThatIsRemoved) {
    const auto defaults = storeWith(R"({"limit": 70})");
    Announcements announcements(*defaults);
    fs::remove(file);
    ASSERT_TRUE(waitUntil([&] { return announcements.count == 1; }));
    EXPECT_EQ(defaults->integerForKey("limit"), 0);
}

TEST_F(JsonUserDefaultsTest, FollowsALinkToItsTargetInBothDirections) {
    fs::create_directory(home.path / "dotfiles");
    const fs::path real = home.path / "dotfiles/velmora.json";
    write(real, R"({"limit": 70})");
    fs::create_symlink(real, file);
    const auto defaults = store();
    Announcements announcements(*defaults);
    write(real, R"({"limit": 71})");
    ASSERT_TRUE(waitUntil([&] { return announcements.count == 1; }));
    EXPECT_EQ(defaults->integerForKey("limit"), 71);
    defaults->setObject("low", 15);
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_NE(contentOf(real).find("\"low\""), std::string::npos);
}

TEST_F(JsonUserDefaultsTest, WritesThroughADanglingLink) {
    fs::create_symlink("later.json", file);
    const auto defaults = store();
    defaults->setObject("limit", 85);
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_TRUE(fs::is_regular_file(file.parent_path() / "later.json"));
}

TEST_F(JsonUserDefaultsTest, RunsOnFallbacksAndSetsDamagedContentAsideBeforeItWrites) {
    int number = 0;
    for (const std::string content :
         {"", "{", "[1, 2]", "\"text\"", "{\"limit\": 70} trailing", "\xFF\xFE{}", "{\"limit\": NaN}"}) {
        const auto defaults = storeWith(content);
        defaults->registerDefaults({{"limit", 80}});
        EXPECT_EQ(defaults->integerForKey("limit"), 80) << content;
        EXPECT_EQ(contentOf(file), content) << "reading changes nothing";
        defaults->setObject("limit", 85);
        EXPECT_EQ(stored(), QJsonDocument::fromJson(R"({"limit": 85})").object()) << content;
        ++number;
        EXPECT_EQ(contentOf(file.string() + ".damaged" + (number == 1 ? "" : "-" + std::to_string(number))), content);
    }
    EXPECT_EQ(contentOf(file.string() + ".damaged"), "") << "the first one stays";
}

TEST_F(JsonUserDefaultsTest, SetsALinkAsideThatLeadsToNoPreferencesAndLeavesAloneWhatItLeadsTo) {
    fs::create_directories(home.path / "Documents/inside");
    write(home.path / "large", std::string(2 << 20, '7'));
    write(home.path / "damaged", "{,}");
    for (const char* target : {"Documents", "large", "damaged"}) {
        fs::remove(file);
        fs::create_symlink(home.path / target, file);
        const auto defaults = store();
        defaults->setObject("limit", 85);
        EXPECT_FALSE(fs::is_symlink(file)) << target;
        EXPECT_EQ(store()->integerForKey("limit"), 85);
    }
    EXPECT_TRUE(fs::is_directory(home.path / "Documents/inside"));
    EXPECT_EQ(fs::file_size(home.path / "large"), std::uintmax_t{2} << 20);
    EXPECT_EQ(contentOf(home.path / "damaged"), "{,}");
    EXPECT_EQ(fs::read_symlink(file.string() + ".damaged"), home.path / "Documents");
    EXPECT_EQ(fs::read_symlink(file.string() + ".damaged-2"), home.path / "large");
    EXPECT_EQ(fs::read_symlink(file.string() + ".damaged-3"), home.path / "damaged");
}

TEST_F(JsonUserDefaultsTest, KeepsADamagedFileThatCannotBeSetAside) {
    const auto defaults = storeWith("{,}");
    for (int number = 1; number <= 100; ++number)
        write(file.string() + ".damaged" + (number == 1 ? "" : "-" + std::to_string(number)), "earlier");
    defaults->setObject("limit", 85);
    EXPECT_EQ(contentOf(file), "{,}");
    EXPECT_EQ(defaults->integerForKey("limit"), 85) << "for this run";
    fs::remove(file.string() + ".damaged-7");
    defaults->setObject("low", 15);
    EXPECT_EQ(store()->integerForKey("limit"), 85);
    EXPECT_EQ(contentOf(file.string() + ".damaged-7"), "{,}");
}

TEST_F(JsonUserDefaultsTest, KeepsTheSettingsWhenTheFileIsDamagedWhileItRuns) {
    const auto defaults = storeWith(R"({"limit": 70, "low": 15})");
    write(file, R"({"limit": 70,, "low": 15})");
    Announcements announcements(*defaults);
    defaults->setObject("low", 16);
    ASSERT_TRUE(waitUntil([&] { return announcements.count > 0; }));
    EXPECT_EQ(defaults->integerForKey("limit"), 70);
    EXPECT_EQ(stored(), QJsonDocument::fromJson(R"({"limit": 70, "low": 16})").object());
    EXPECT_EQ(contentOf(file.string() + ".damaged"), R"({"limit": 70,, "low": 15})");
}

TEST_F(JsonUserDefaultsTest, KeepsTheSettingsWhenTheFileIsDamagedAndTheDiskIsFull) {
    const auto defaults = storeWith(R"({"limit": 70, "low": 15})");
    write(file, "{,}");
    {
        DiskFaults faults;
        faults.writes = {{.error = ENOSPC}};
        defaults->setObject("low", 16);
    }
    EXPECT_EQ(contentOf(file), "{,}");
    EXPECT_EQ(defaults->integerForKey("limit"), 70);
    EXPECT_EQ(defaults->integerForKey("low"), 16);
    defaults->setObject("flag", true);
    EXPECT_EQ(stored(), QJsonDocument::fromJson(R"({"limit": 70, "low": 16, "flag": true})").object());
}

TEST_F(JsonUserDefaultsTest, KeepsNothingForWhoLinksTheFileToNothing) {
    fs::create_symlink("/dev/null", file);
    const auto defaults = store();
    defaults->setObject("limit", 85);
    EXPECT_EQ(defaults->integerForKey("limit"), 85) << "for this run";
    EXPECT_EQ(fs::read_symlink(file), "/dev/null");
    EXPECT_FALSE(fs::exists(fs::symlink_status(file.string() + ".damaged")));
}

TEST_F(JsonUserDefaultsTest, SetsAFolderInTheFilesPlaceAside) {
    fs::create_directories(file / "inside");
    const auto defaults = store();
    EXPECT_EQ(defaults->integerForKey("limit"), 0);
    defaults->setObject("limit", 85);
    EXPECT_EQ(store()->integerForKey("limit"), 85);
    EXPECT_TRUE(fs::is_directory(file.string() + ".damaged/inside"));
}

TEST_F(JsonUserDefaultsTest, RunsOnFallbacksBesideAFileThatItMayNotReadAndSetsItAside) {
    write(file, R"({"limit": 70})");
    fs::permissions(file, fs::perms::none);
    const OrdinaryUser user(home.path);
    const auto defaults = store();
    EXPECT_EQ(defaults->integerForKey("limit"), 0);
    defaults->setObject("limit", 85);
    EXPECT_EQ(store()->integerForKey("limit"), 85);
    fs::permissions(file.string() + ".damaged", fs::perms::owner_read);
    EXPECT_EQ(contentOf(file.string() + ".damaged"), R"({"limit": 70})");
}

TEST_F(JsonUserDefaultsTest, KeepsAValueForTheRunWhereTheFolderMayNotBeWritten) {
    write(file, R"({"limit": 70})");
    const OrdinaryUser user(home.path);
    fs::permissions(file.parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
    const auto defaults = store();
    defaults->setObject("limit", 85);
    EXPECT_EQ(defaults->integerForKey("limit"), 85);
    EXPECT_EQ(store()->integerForKey("limit"), 70);
    // Once the folder can be written to again, the value held back is written together with the next one.
    fs::permissions(file.parent_path(), fs::perms::owner_all);
    defaults->setObject("low", 15);
    EXPECT_EQ(store()->integerForKey("limit"), 85);
}

TEST_F(JsonUserDefaultsTest, LosesNoKeyWhenTwoProcessesWriteAtTheSameTime) {
    constexpr int keys = 60;
    const auto writeKeys = [&](const std::string& prefix) {
        const auto defaults = store();
        for (int key = 0; key < keys; ++key)
            defaults->setObject(prefix + std::to_string(key), key);
    };
    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        writeKeys("theirs");
        ::_exit(0);
    }
    writeKeys("ours");
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(stored().size(), 2 * keys);
}

TEST_F(JsonUserDefaultsTest, MakesItsFolderAnewAndFollowsItAgain) {
    const auto defaults = storeWith(R"({"limit": 70})");
    Announcements announcements(*defaults);
    fs::remove_all(file.parent_path());
    ASSERT_TRUE(waitUntil([&] { return announcements.count == 1; }));
    defaults->setObject("limit", 71);
    ASSERT_TRUE(waitUntil([&] { return announcements.count == 2; }));
    write(file, R"({"limit": 72})");
    ASSERT_TRUE(waitUntil([&] { return announcements.count == 3; }));
    EXPECT_EQ(defaults->integerForKey("limit"), 72);
}

namespace {

/// A disk that can be full.
class RefusingFiles final : public Files {
public:
    explicit RefusingFiles(const fs::path& folder) : files_(folder) {}
    bool refuses = false;

    fs::path applicationSupportFolder() const override { return files_.applicationSupportFolder(); }
    fs::path stateFolder() const override { return files_.stateFolder(); }
    bool createFolder(const fs::path& folder) override { return files_.createFolder(folder); }
    std::optional<std::string> read(const fs::path& file, std::size_t limit) const override {
        return files_.read(file, limit);
    }
    void load(const fs::path& file, std::size_t limit,
              std::function<Task(std::optional<std::string> content)> decode) override {
        files_.load(file, limit, decode);
    }
    void update(const fs::path& file, std::size_t limit, Change change, Done done) override {
        if (refuses)
            done(std::make_error_code(std::errc::no_space_on_device));
        else
            files_.update(file, limit, change, done);
    }
    bool setAside(const fs::path& file) override { return files_.setAside(file); }
    void updateAtEnd(const fs::path& file, std::size_t limit, Change change) override {
        files_.updateAtEnd(file, limit, change);
    }
    std::error_code replaceNow(const fs::path& file, std::string_view content) override {
        return files_.replaceNow(file, content);
    }
    std::error_code saveDocument(const fs::path& file, std::string_view content) override {
        return files_.saveDocument(file, content);
    }
    bool claim(const fs::path& file) override { return files_.claim(file); }
    Subscription onChange(const fs::path& file, std::function<void()> callback) override {
        return files_.onChange(file, callback);
    }

private:
    PosixFiles files_;
};

class JsonBackend {
public:
    std::unique_ptr<UserDefaults> open() {
        return std::make_unique<JsonUserDefaults>(home_.path / "Velmora/defaults.json", files_, loop_);
    }
    template <class Condition>
    bool waitUntil(Condition condition) {
        return ::waitUntil(condition);
    }
    void settle() {
        // The kernel reports a file that is written now after all files that were written before.
        const auto witness = std::make_unique<JsonUserDefaults>(home_.path / "witness.json", witnessFiles_, loop_);
        bool told = false;
        const auto subscription = witness->onChange([&] { told = true; });
        write(home_.path / "witness.json", "{\"told\": " + std::to_string(++settled_) + "}");
        ASSERT_TRUE(::waitUntil([&] { return told; }));
    }
    void refuseWrites() { files_.refuses = true; }

private:
    TemporaryFolder home_;
    RefusingFiles files_{home_.path};
    PosixFiles witnessFiles_{home_.path};
    QtMainLoop loop_;
    int settled_ = 0;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Json, UserDefaultsContract, JsonBackend);
