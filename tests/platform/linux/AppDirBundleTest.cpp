// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/AppDirBundle.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

/// A folder with what `make_app.sh` puts there.
class AppDirBundleTest : public testing::Test {
protected:
    TemporaryFolder folder;
    fs::path bundle = folder.path / "Velmora.app";
    fs::path program = bundle / "usr/bin/velmora";

    void SetUp() override { makeBundle(bundle); }

    static void makeBundle(const fs::path& at) {
        fs::create_directories(at / "usr/bin");
        fs::create_directories(at / "usr/share/applications");
        write(at / "usr/bin/velmora", "program");
        fs::create_symlink("usr/bin/velmora", at / "AppRun");
        addEntry(at, "app.velmora.Velmora");
    }

    static void addEntry(const fs::path& at, const std::string& name) {
        write(at / "usr/share/applications" / (name + ".desktop"), "[Desktop Entry]\n");
        fs::create_symlink("usr/share/applications/" + name + ".desktop", at / (name + ".desktop"));
    }

    void isNoBundle(const char* why) {
        const AppDirBundle found(program);
        EXPECT_EQ(found.location(), program.parent_path()) << why;
        EXPECT_EQ(found.identifier(), std::nullopt) << why;
    }
};

} // namespace

TEST_F(AppDirBundleTest, FindsTheBundleWhateverItIsCalled) {
    for (const char* name : {"Velmora.app", "Velmora (2)", "büro\nzeug"}) {
        const fs::path place = folder.path / name;
        fs::rename(bundle, place);
        const AppDirBundle found(place / "usr/bin/velmora");
        EXPECT_EQ(found.location(), place);
        EXPECT_EQ(found.identifier(), "app.velmora.Velmora");
        fs::rename(place, bundle);
    }
}

TEST_F(AppDirBundleTest, FindsTheNearestOfTwo) {
    const fs::path inner = bundle / "usr/inner.app";
    makeBundle(inner);
    EXPECT_EQ(AppDirBundle(inner / "usr/bin/velmora").location(), inner);
    EXPECT_EQ(AppDirBundle(program).location(), bundle);
}

TEST_F(AppDirBundleTest, IsNotFooledByTheBundleOfAnotherProgram) {
    const fs::path other = bundle / "usr/share/other/program";
    fs::create_directories(other.parent_path());
    write(other, "another");
    EXPECT_EQ(AppDirBundle(other).location(), other.parent_path());
    EXPECT_EQ(AppDirBundle(other).identifier(), std::nullopt);
}

TEST_F(AppDirBundleTest, NeedsAnAppRunThatIsTheProgram) {
    fs::remove(bundle / "AppRun");
    isNoBundle("nothing to start");
    fs::create_symlink("AppRun", bundle / "AppRun");
    isNoBundle("a link to itself");
}

TEST_F(AppDirBundleTest, NeedsExactlyOneDesktopEntry) {
    addEntry(bundle, "app.velmora.Other");
    isNoBundle("two entries");
    fs::remove(bundle / "app.velmora.Other.desktop");
    EXPECT_EQ(AppDirBundle(program).identifier(), "app.velmora.Velmora");
    fs::remove(bundle / "app.velmora.Velmora.desktop");
    isNoBundle("no entry");
    fs::create_directory(bundle / "app.velmora.Velmora.desktop");
    isNoBundle("a folder");
}

TEST_F(AppDirBundleTest, TakesNoNameThatIsNoIdentifier) {
    fs::remove(bundle / "app.velmora.Velmora.desktop");
    for (const char* name : {"", "a b", ".hidden", "a..b", "a.", "a\nb", "ä"}) {
        const fs::path file = bundle / (std::string(name) + ".desktop");
        write(file, "[Desktop Entry]\n");
        isNoBundle(name);
        fs::remove(file);
    }
}

TEST_F(AppDirBundleTest, DoesNotReadAFolderThatIsFullOfOtherThings) {
    for (int i = 0; i < 200; ++i)
        write(bundle / std::to_string(i), "");
    isNoBundle("full");
}

TEST_F(AppDirBundleTest, SurvivesPathsThatLeadNowhere) {
    for (const char* path : {"", "/", "/velmora", "/nowhere/at/all", "velmora"})
        EXPECT_EQ(AppDirBundle(path).identifier(), std::nullopt) << path;
}

TEST_F(AppDirBundleTest, KnowsTheProgramThatRuns) {
    const fs::path running = AppDirBundle::runningExecutable();
    EXPECT_TRUE(running.is_absolute());
    EXPECT_TRUE(fs::equivalent(running, "/proc/self/exe"));
}
