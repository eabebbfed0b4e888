// SPDX-License-Identifier: GPL-3.0-or-later
// Checks the entry that we write with the tools of desktops: the validator, GLib's launcher and systemd's generator.
#include "platform/linux/files/PosixFiles.h"
#include "platform/linux/session/ExecutableBundle.h"
#include "platform/linux/session/XdgAutostart.h"
#include "support/InstalledPrefix.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QProcess>
#include <gtest/gtest.h>

#include <ostream>

namespace fs = std::filesystem;

namespace {

enum class Systemd {
    starts,
    cannotTell ///< QUIRK: the generator of systemd 252 unescapes backslashes once too often
};

struct Place {
    const char* name; ///< of the bundle's folder, or of its prefix
    Systemd systemd = Systemd::starts;
    bool isPrefix = false; ///< rather than an AppDir
};

void PrintTo(const Place& place, std::ostream* out) {
    *out << testing::PrintToString(place.name) << (place.isPrefix ? ", a prefix" : "");
}

struct Result {
    int code = -1;
    std::string output;
};

Result run(const fs::path& home, const char* program, const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
    environment.insert(QStringLiteral("HOME"), QString::fromStdString(home.string()));
    environment.insert(QStringLiteral("XDG_CONFIG_DIRS"), QStringLiteral("/nonexistent"));
    environment.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("Velmora"));
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QString::fromUtf8(program), arguments);
    process.waitForFinished(10000);
    return {.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            .output = process.readAll().toStdString()};
}

/// A bundle in a folder of any name. Its program writes down how it was called.
class AutostartLaunch : public testing::TestWithParam<Place> {
protected:
    TemporaryFolder folder;
    fs::path home = folder.path / "home";
    fs::path place = folder.path / GetParam().name;
    fs::path started = place / (GetParam().isPrefix ? "bin/velmora" : "AppRun");
    fs::path note = folder.path / "note";
    fs::path entry = home / ".config/autostart/app.velmora.Velmora.desktop";

    void SetUp() override {
        fs::create_directories(home);
        const fs::path prefix = GetParam().isPrefix ? place : place / "usr";
        makePrefix(prefix);
        const fs::path program = prefix / "bin/velmora";
        write(program, "#!/bin/sh\nprintf '%s, %d arguments' \"$0\" \"$#\" >'" + note.string() + ".new'\nmv '" +
                           note.string() + ".new' '" + note.string() + "'\n");
        fs::permissions(program, fs::perms::owner_all);
        if (!GetParam().isPrefix) {
            fs::create_symlink("usr/bin/velmora", place / "AppRun");
            write(place / "app.velmora.Velmora.desktop", "[Desktop Entry]\n");
        }

        const ExecutableBundle bundle(program);
        PosixFiles files(folder.path / "data");
        XdgAutostart item(bundle, files, home / ".config", {});
        ASSERT_EQ(item.registerItem(), std::nullopt);
        ASSERT_TRUE(item.isEnabled());
    }

    QString entryPath() const { return QString::fromStdString(entry.string()); }
};

} // namespace

TEST_P(AutostartLaunch, TheEntryIsValid) {
    const Result result = run(home, "desktop-file-validate", {entryPath()});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output, "");
}

TEST_P(AutostartLaunch, GLibStartsTheProgram) {
    const Result result = run(home, "gio", {QStringLiteral("launch"), entryPath()});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(waitUntil([&] { return fs::exists(note); }));
    EXPECT_EQ(contentOf(note), started.string() + ", 0 arguments");
}

TEST_P(AutostartLaunch, SystemdMakesAServiceOfIt) {
    const fs::path units = folder.path / "units";
    fs::create_directories(units);
    const QString where = QString::fromStdString(units.string());
    const Result result =
        run(home, "/usr/lib/systemd/user-generators/systemd-xdg-autostart-generator", {where, where, where});
    EXPECT_EQ(result.code, 0);
    const bool isMade = fs::exists(units / "app-app.velmora.Velmora@autostart.service");
    EXPECT_EQ(isMade, GetParam().systemd == Systemd::starts) << result.output;
}

INSTANTIATE_TEST_SUITE_P(Any, AutostartLaunch,
                         testing::Values(Place{"Velmora.app"}, Place{"my apps/Büro 日本 🔋"}, Place{"the \"new\" one's"},
                                         Place{"100%"}, Place{"%f %%u"}, Place{"a=b"}, Place{"$HOME `id` ${PATH}"},
                                         Place{"#1;~&|<>*?()[]{}!"}, Place{"line\nbreak\tand tab "},
                                         Place{"back\\slash", Systemd::cannotTell}, Place{"usr", Systemd::starts, true},
                                         Place{"my programs/100%", Systemd::starts, true}));
