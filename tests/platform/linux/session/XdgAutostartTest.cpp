// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/XdgAutostart.h"

#include "platform/linux/files/PosixFiles.h"
#include "platform/linux/session/AutostartEntry.h"
#include "support/FakeBundle.h"
#include "support/LoginItemContract.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <optional>

namespace fs = std::filesystem;

namespace {

void putProgram(const fs::path& prefix) {
    fs::create_directories(prefix / "bin");
    write(prefix / "bin/velmora", "program");
    fs::permissions(prefix / "bin/velmora", fs::perms::owner_all | fs::perms::others_exec | fs::perms::others_read);
}

void makeBundle(const fs::path& at) {
    putProgram(at / "usr");
    fs::create_symlink("usr/bin/velmora", at / "AppRun");
}

/// A user's home, the system's configuration folders and the running bundle.
struct World {
    TemporaryFolder folder;
    PosixFiles files{folder.path / "data"};
    FakeBundle bundle;
    fs::path home = folder.path / "home/.config";
    fs::path first = folder.path / "etc/first";
    fs::path second = folder.path / "etc/second";
    fs::path own = home / "autostart/app.velmora.Velmora.desktop";
    XdgAutostart item{bundle, files, home, {first, second}};

    World() {
        bundle.place = folder.path / "Velmora.app";
        makeBundle(bundle.place);
        fs::create_directories(first / "autostart");
        fs::create_directories(second / "autostart");
    }

    static std::string entry(const fs::path& at, AutostartEntry::Switch state = AutostartEntry::Switch::on) {
        return AutostartEntry::text(at / "AppRun", at / "app.velmora.Velmora.svg", state).value();
    }
    void putSystemEntry(const fs::path& configFolder, const std::string& content) const {
        write(configFolder / "autostart/app.velmora.Velmora.desktop", content);
    }
    void putOwnEntry(const std::string& content) const {
        fs::create_directories(own.parent_path());
        write(own, content);
    }
};

class XdgAutostartTest : public testing::Test, protected World {};

class XdgBackend : World {
public:
    LoginItem& item() { return World::item; }
    void desktopSwitches(bool on) const {
        putOwnEntry(entry(bundle.place) + (on ? "Hidden=false\n" : "Hidden=true\n"));
    }
    void refuseWrites() {
        fs::create_directories(home / "autostart");
        fs::permissions(home / "autostart", fs::perms::owner_read | fs::perms::owner_exec);
        user_.emplace(folder.path);
    }
    ~XdgBackend() {
        std::error_code missing;
        fs::permissions(home / "autostart", fs::perms::owner_all, missing); // otherwise only root could empty it
        user_.reset();
    }

private:
    std::optional<OrdinaryUser> user_;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Xdg, LoginItemContract, XdgBackend);

TEST_F(XdgAutostartTest, WritesTheEntryOfTheBundleAndRemovesIt) {
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_EQ(contentOf(own), entry(bundle.place));
    EXPECT_EQ(item.unregisterItem(), std::nullopt);
    EXPECT_TRUE(fs::is_empty(own.parent_path()));
}

TEST_F(XdgAutostartTest, NamesTheProgramAndTheIconOfAPrefix) {
    bundle.place = folder.path / "usr";
    bundle.installed = true;
    EXPECT_EQ(item.registerItem(), "No such file or directory");
    putProgram(bundle.place);
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_EQ(contentOf(own),
              AutostartEntry::text(bundle.place / "bin/velmora",
                                   bundle.place / "share/icons/hicolor/scalable/apps" / "app.velmora.Velmora.svg",
                                   AutostartEntry::Switch::on));
    EXPECT_TRUE(item.isEnabled());
    fs::create_symlink("usr/bin/velmora", folder.path / "velmora");
    putOwnEntry("[Desktop Entry]\nType=Application\nName=Mine\nExec=" + (folder.path / "velmora").string() + "\n");
    EXPECT_TRUE(item.isEnabled()) << "by another name";
    putOwnEntry(entry(folder.path / "Velmora.app"));
    EXPECT_FALSE(item.isEnabled()) << "it starts another copy";
    putSystemEntry(first, entry(folder.path / "Velmora.app"));
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(item.unregisterItem(), std::nullopt);
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(contentOf(own), AutostartEntry::text(bundle.program(), bundle.icon(), AutostartEntry::Switch::off));
}

TEST_F(XdgAutostartTest, LeavesAloneWhatAlreadyStartsIt) {
    const std::string mine = "[Desktop Entry]\nType=Application\nName=Mine\nX-GNOME-Autostart-Delay=5\nExec=\"" +
                             (bundle.place / "AppRun").string() + "\" --flag\n";
    putOwnEntry(mine);
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_EQ(contentOf(own), mine);
}

TEST_F(XdgAutostartTest, IsOffWhereTheDesktopSwitchedItOffAndBackOnByUs) {
    for (const char* line : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
        putOwnEntry(entry(bundle.place) + line);
        EXPECT_FALSE(item.isEnabled()) << line;
        EXPECT_EQ(item.registerItem(), std::nullopt);
        EXPECT_EQ(contentOf(own), entry(bundle.place)) << line;
    }
}

TEST_F(XdgAutostartTest, IsOffWhenTheEntryIsDamagedHugeOrNoFile) {
    for (const std::string& content :
         {std::string(), "x" + entry(bundle.place), entry(bundle.place) + "Hidden\n",
          entry(bundle.place) + std::string(1, '\0'), entry(bundle.place) + "#" + std::string(10'000'000, 'x')}) {
        putOwnEntry(content);
        EXPECT_FALSE(item.isEnabled());
        EXPECT_EQ(item.registerItem(), std::nullopt);
        EXPECT_TRUE(item.isEnabled());
    }
    fs::remove(own);
    fs::create_directory(own);
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(item.registerItem(), "File exists");
}

TEST_F(XdgAutostartTest, IsOffOnceTheBundleHasMoved) {
    ASSERT_EQ(item.registerItem(), std::nullopt);
    const fs::path moved = folder.path / "Applications";
    fs::rename(bundle.place, moved);
    bundle.place = moved;
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(contentOf(own), entry(moved));
}

TEST_F(XdgAutostartTest, IsOffForAnotherCopyAndDoesNotSwitchThisOneOff) {
    ASSERT_EQ(item.registerItem(), std::nullopt);
    FakeBundle copy;
    copy.place = folder.path / "copy";
    makeBundle(copy.place);
    XdgAutostart other(copy, files, home, {first, second});
    EXPECT_FALSE(other.isEnabled());
    EXPECT_EQ(other.unregisterItem(), std::nullopt);
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(other.registerItem(), std::nullopt);
    EXPECT_TRUE(other.isEnabled());
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(XdgAutostartTest, KnowsItsBundleByAnotherName) {
    fs::create_directory_symlink(bundle.place, folder.path / "link");
    putOwnEntry(entry(folder.path / "link"));
    EXPECT_TRUE(item.isEnabled());
}

TEST_F(XdgAutostartTest, IsOffWhenWhatTheEntryTriesIsMissingOrCannotRun) {
    const fs::path tried = folder.path / "tried";
    const std::string whole = entry(bundle.place);
    const std::string command = whole.substr(0, whole.find("TryExec="));
    const auto isEnabledWith = [&](const std::string& line) {
        putOwnEntry(command + line);
        return item.isEnabled();
    };
    EXPECT_TRUE(isEnabledWith(""));
    EXPECT_TRUE(isEnabledWith("TryExec=velmora\n"));
    EXPECT_FALSE(isEnabledWith("TryExec=" + tried.string() + "\n"));
    write(tried, "");
    EXPECT_FALSE(isEnabledWith("TryExec=" + tried.string() + "\n"));
    fs::permissions(tried, fs::perms::owner_all);
    EXPECT_TRUE(isEnabledWith("TryExec=" + tried.string() + "\n"));
}

TEST_F(XdgAutostartTest, CannotBeRegisteredForABundleThatIsGone) {
    fs::remove_all(bundle.place);
    EXPECT_EQ(item.registerItem(), "No such file or directory");
    EXPECT_FALSE(fs::exists(own));
}

TEST_F(XdgAutostartTest, SaysSoOutsideABundle) {
    ASSERT_EQ(item.registerItem(), std::nullopt);
    bundle.name.reset();
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(item.registerItem(), "Velmora does not run from an application bundle");
    EXPECT_EQ(item.unregisterItem(), "Velmora does not run from an application bundle");
    EXPECT_TRUE(fs::exists(own));
}

TEST_F(XdgAutostartTest, SaysSoWhereTheFolderCannotBeNamed) {
    const fs::path odd = folder.path / "latin1-\xfc";
    fs::rename(bundle.place, odd);
    bundle.place = odd;
    EXPECT_EQ(item.registerItem(), "The name of its folder has characters that an autostart entry cannot hold");
    EXPECT_FALSE(fs::exists(own));
}

TEST_F(XdgAutostartTest, TellsTheSystemsReason) {
    fs::create_directories(own.parent_path());
    fs::permissions(own.parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
    const OrdinaryUser user(folder.path);
    EXPECT_EQ(item.registerItem(), "Permission denied");
    fs::permissions(own.parent_path(), fs::perms::owner_all);
}

TEST_F(XdgAutostartTest, IsOnByTheEntryOfTheSystem) {
    putSystemEntry(second, entry(bundle.place));
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_FALSE(fs::exists(own)) << "nothing was missing";
    putSystemEntry(first, entry("/opt/another"));
    EXPECT_FALSE(item.isEnabled()) << "the folder of higher rank counts";
}

TEST_F(XdgAutostartTest, HidesTheEntryOfTheSystemAndBringsItBack) {
    putSystemEntry(second, entry(bundle.place));
    EXPECT_EQ(item.unregisterItem(), std::nullopt);
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(contentOf(own), entry(bundle.place, AutostartEntry::Switch::off));
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_TRUE(item.isEnabled());
    EXPECT_FALSE(fs::exists(own)) << "the system's entry is enough";
}

TEST_F(XdgAutostartTest, StaysOffWhereTheSystemWouldStartAnotherCopy) {
    putSystemEntry(first, entry("/opt/another"));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(contentOf(own), entry(bundle.place));
    EXPECT_EQ(item.unregisterItem(), std::nullopt);
    EXPECT_EQ(contentOf(own), entry(bundle.place, AutostartEntry::Switch::off)) << "without it the other would start";
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_EQ(contentOf(own), entry(bundle.place)) << "the other's entry is not enough";
}

TEST_F(XdgAutostartTest, WritesThroughALinkAndKeepsIt) {
    const fs::path target = folder.path / "dotfiles/velmora.desktop";
    fs::create_directories(own.parent_path());
    fs::create_symlink(target, own);
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_EQ(contentOf(target), entry(bundle.place));
    EXPECT_EQ(item.unregisterItem(), std::nullopt);
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(contentOf(target), entry(bundle.place, AutostartEntry::Switch::off));
    putSystemEntry(first, entry(bundle.place));
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_EQ(contentOf(target), entry(bundle.place));
    EXPECT_TRUE(fs::is_symlink(own));
}

TEST_F(XdgAutostartTest, PutsNothingInThePlaceOfADevice) {
    const fs::path device = folder.path / "null"; // stands for /dev/null, which a test should not risk
    ASSERT_EQ(::mkfifo(device.c_str(), 0600), 0);
    fs::create_directories(own.parent_path());
    fs::create_symlink(device, own);
    EXPECT_EQ(item.registerItem(), "File exists");
    EXPECT_TRUE(fs::is_fifo(device));
}

TEST_F(XdgAutostartTest, LeavesOtherEntriesAlone) {
    fs::create_directories(own.parent_path());
    const fs::path other = own.parent_path() / "other.desktop";
    write(other, "x");
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_EQ(item.unregisterItem(), std::nullopt);
    EXPECT_EQ(contentOf(other), "x");
}
