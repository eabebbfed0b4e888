// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/ExecutableBundle.h"

#include "platform/qt/ProgramFiles.h"
#include "support/InstalledPrefix.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

void isNoBundle(const fs::path& executable, const std::string& why) {
    const ExecutableBundle found(executable);
    EXPECT_EQ(found.location(), executable.parent_path()) << why;
    EXPECT_EQ(found.identifier(), std::nullopt) << why;
    EXPECT_FALSE(found.isInstalled()) << why;
}

/// A folder with the files that `make_app.sh` puts there.
class AppDirTest : public testing::Test {
protected:
    TemporaryFolder folder;
    fs::path bundle = folder.path / "Velmora.app";
    fs::path program = bundle / "usr/bin/velmora";

    void SetUp() override { makeBundle(bundle); }

    static void makeBundle(const fs::path& at) {
        makePrefix(at / "usr");
        fs::create_symlink("usr/bin/velmora", at / "AppRun");
        addEntry(at, "app.velmora.Velmora");
    }

    static void addEntry(const fs::path& at, const std::string& name) {
        write(at / "usr/share/applications" / (name + ".desktop"), "[Desktop Entry]\n");
        fs::create_symlink("usr/share/applications/" + name + ".desktop", at / (name + ".desktop"));
    }

    void isNoBundle(const char* why) { ::isNoBundle(program, why); }
};

/// A folder with the files that `cmake --install` puts below a prefix.
class PrefixTest : public testing::Test {
protected:
    TemporaryFolder folder;
    fs::path prefix = folder.path / "usr";
    fs::path program = prefix / "bin/velmora";

    void SetUp() override { makePrefix(prefix); }
};

} // namespace

TEST_F(AppDirTest, FindsTheBundleWhateverItIsCalled) {
    for (const char* name : {"Velmora.app", "Velmora (2)", "büro\nzeug"}) {
        const fs::path place = folder.path / name;
        fs::rename(bundle, place);
        const ExecutableBundle found(place / "usr/bin/velmora");
        EXPECT_EQ(found.location(), place);
        EXPECT_EQ(found.identifier(), "app.velmora.Velmora");
        EXPECT_FALSE(found.isInstalled());
        EXPECT_EQ(found.program(), place / "AppRun");
        EXPECT_EQ(found.icon(), place / "app.velmora.Velmora.svg");
        fs::rename(place, bundle);
    }
}

TEST_F(AppDirTest, FindsTheNearestOfTwo) {
    const fs::path inner = bundle / "usr/inner.app";
    makeBundle(inner);
    EXPECT_EQ(ExecutableBundle(inner / "usr/bin/velmora").location(), inner);
    EXPECT_EQ(ExecutableBundle(program).location(), bundle);
}

TEST_F(AppDirTest, IsNotFooledByTheBundleOfAnotherProgram) {
    const fs::path other = bundle / "usr/share/other/program";
    fs::create_directories(other.parent_path());
    write(other, "another");
    EXPECT_EQ(ExecutableBundle(other).location(), other.parent_path());
    EXPECT_EQ(ExecutableBundle(other).identifier(), std::nullopt);
}

TEST_F(AppDirTest, NeedsAnAppRunThatIsTheProgram) {
    fs::remove_all(bundle / "usr/share"); // otherwise `usr` would be a prefix
    fs::remove(bundle / "AppRun");
    isNoBundle("nothing to start");
    fs::create_symlink("AppRun", bundle / "AppRun");
    isNoBundle("a link to itself");
}

TEST_F(AppDirTest, NeedsExactlyOneDesktopEntry) {
    addEntry(bundle, "app.velmora.Other");
    isNoBundle("two entries");
    fs::remove(bundle / "app.velmora.Other.desktop");
    EXPECT_EQ(ExecutableBundle(program).identifier(), "app.velmora.Velmora");
    fs::remove(bundle / "app.velmora.Velmora.desktop");
    isNoBundle("no entry");
    fs::create_directory(bundle / "app.velmora.Velmora.desktop");
    isNoBundle("a folder");
}

TEST_F(AppDirTest, TakesNoNameThatIsNoIdentifier) {
    fs::remove(bundle / "app.velmora.Velmora.desktop");
    for (const char* name : {"", "a b", ".hidden", "a..b", "a.", "a\nb", "ä"}) {
        const fs::path file = bundle / (std::string(name) + ".desktop");
        write(file, "[Desktop Entry]\n");
        isNoBundle(name);
        fs::remove(file);
    }
}

TEST_F(AppDirTest, DoesNotReadAFolderThatIsFullOfOtherThings) {
    for (int i = 0; i < 200; ++i)
        write(bundle / std::to_string(i), "");
    isNoBundle("full");
}

TEST(ExecutableBundle, SurvivesPathsThatLeadNowhere) {
    const std::string longName(300, 'x');
    for (const std::string& path :
         std::vector<std::string>{"", "/", "/velmora", "/bin/velmora", "/nowhere/at/all", "velmora", "bin/velmora",
                                  "/" + longName + "/bin/velmora", "/dev/null/bin/velmora"})
        EXPECT_EQ(ExecutableBundle(path).identifier(), std::nullopt) << path;
}

TEST_F(PrefixTest, IsABundleWithItsProgramAndItsIcon) {
    const ExecutableBundle found(program);
    EXPECT_EQ(found.location(), prefix);
    EXPECT_EQ(found.identifier(), "app.velmora.Velmora");
    EXPECT_TRUE(found.isInstalled());
    EXPECT_EQ(found.program(), program);
    EXPECT_EQ(found.icon(), prefix / "share/icons/hicolor/scalable/apps/app.velmora.Velmora.svg");
    EXPECT_EQ(prefixOf(program), prefix);
}

TEST_F(PrefixTest, IsStartedByTheProgramWhoeverStartedUs) {
    const fs::path wrapped = prefix / "bin/.velmora-wrapped";
    write(wrapped, "program");
    const ExecutableBundle found(wrapped);
    EXPECT_EQ(found.location(), prefix);
    EXPECT_EQ(found.program(), program) << "a script that sets variables, for instance";
}

TEST_F(PrefixTest, NeedsAllThatIsInstalled) {
    for (const std::string& name : installedFiles) {
        const fs::path file = prefix / name;
        fs::remove(file);
        isNoBundle(prefix / "bin/started", "without " + name);
        fs::create_directory(file);
        isNoBundle(prefix / "bin/started", "a folder in the place of " + name);
        fs::remove(file);
        fs::create_symlink(file.filename(), file);
        isNoBundle(prefix / "bin/started", "a link to itself in the place of " + name);
        fs::remove(file);
        write(file, name);
        EXPECT_TRUE(ExecutableBundle(prefix / "bin/started").isInstalled()) << name;
    }
}

TEST_F(PrefixTest, MayBeMadeOfLinks) {
    const fs::path tree = folder.path / "tree";
    for (const std::string& name : installedFiles) {
        fs::create_directories((tree / name).parent_path());
        fs::create_symlink(prefix / name, tree / name);
    }
    EXPECT_EQ(ExecutableBundle(tree / "bin/velmora").location(), tree);
}

TEST_F(PrefixTest, HasItsProgramsInTheFolderBin) {
    for (const char* name : {"libexec", "Bin", "bin/deeper"}) {
        const fs::path executable = prefix / name / "velmora";
        fs::create_directories(executable.parent_path());
        write(executable, "program");
        isNoBundle(executable, name);
    }
}

TEST_F(AppDirTest, CountsBeforeThePrefixInIt) {
    const ExecutableBundle found(program);
    EXPECT_EQ(found.location(), bundle);
    EXPECT_FALSE(found.isInstalled());
    EXPECT_EQ(found.program(), bundle / "AppRun");
}

TEST_F(AppDirTest, IsNoneWhereSomethingElseStartsIt) {
    fs::remove(bundle / "AppRun");
    write(bundle / "AppRun", "#!/bin/sh");
    isNoBundle("a script, as in an AppImage");
}

TEST_F(AppDirTest, IsAPrefixWithoutAnAppRun) {
    fs::remove(bundle / "AppRun");
    const ExecutableBundle found(program);
    EXPECT_EQ(found.location(), bundle / "usr");
    EXPECT_TRUE(found.isInstalled());
}

TEST(ExecutableBundle, KnowsTheProgramThatRuns) {
    const fs::path running = runningExecutable();
    EXPECT_TRUE(running.is_absolute());
    EXPECT_TRUE(fs::equivalent(running, "/proc/self/exe"));
    EXPECT_EQ(ExecutableBundle(running).identifier(), std::nullopt) << "a build folder has no desktop entry";
}
