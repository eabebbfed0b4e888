// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/PowerProfiles.h"

#include "platform/linux/bus/SystemBus.h"
#include "platform/linux/session/QtMainLoop.h"
#include "support/PowerProfileNames.h"
#include "support/PrivateBus.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QDBusVariant>
#include <QElapsedTimer>
#include <gtest/gtest.h>

namespace {

const QString activeProfile = QStringLiteral("ActiveProfile");

class PowerProfilesTest : public testing::Test {
protected:
    PrivateBus bus;
    QtMainLoop loop;
    TemporaryFolder sysfs;
    SystemBus systemBus{bus.socket(), loop};
    PowerProfiles profiles{systemBus, sysfs.path, std::chrono::milliseconds(50)};
    int changes = 0;
    Subscription subscription = profiles.onPowerStateChanged([this] { ++changes; });

    void start() {
        profiles.start();
        systemBus.start();
    }

    std::unique_ptr<StandIn> oldDaemon() {
        return std::make_unique<StandIn>(
            bus, oldName, QStringList{QStringLiteral("--template"), QStringLiteral("power_profiles_daemon")});
    }

    std::unique_ptr<StandIn> newDaemon(const QString& profile) {
        auto daemon = std::make_unique<StandIn>(bus, newName, QStringList{newName, newPath, newName});
        bus.call(newName, newPath, mock, QStringLiteral("AddProperty"),
                 {newName, activeProfile, QVariant::fromValue(QDBusVariant(profile))});
        return daemon;
    }

    void switchTo(const QString& name, const QString& path, const QString& profile) const {
        bus.call(name, path, mock, QStringLiteral("UpdateProperties"), {name, QVariantMap{{activeProfile, profile}}});
    }

    static QVariantMap toProfile(const char* profile) { return {{activeProfile, QString::fromLatin1(profile)}}; }

    /// Sends PropertiesChanged as the new daemon does, with any arguments.
    void tell(const QVariantList& arguments, const char* signature = "sa{sv}as") const {
        QVariantList wrapped;
        for (const QVariant& argument : arguments)
            wrapped.append(QVariant::fromValue(QDBusVariant(argument)));
        bus.call(newName, newPath, mock, QStringLiteral("EmitSignal"),
                 {QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"),
                  QString::fromLatin1(signature), wrapped});
    }

    /// Expects that the low-power mode stayed on through all signals so far. A signal that switched it off would have
    /// added two changes, off and on again.
    void expectNothingHeard() {
        tell({newName, toProfile("power-saver"), QStringList()});
        tell({newName, toProfile("balanced"), QStringList()});
        EXPECT_TRUE(becomes(false));
        EXPECT_EQ(changes, 2) << "once to power-saver and once away from it";
    }

    bool becomes(bool lowPower) {
        return waitUntil([&] { return profiles.isLowPowerModeEnabled() == lowPower; });
    }
};

} // namespace

TEST_F(PowerProfilesTest, FollowsTheDaemonUnderItsOldName) {
    const auto daemon = oldDaemon();
    start();
    switchTo(oldName, oldPath, QStringLiteral("power-saver"));
    EXPECT_TRUE(becomes(true));
    EXPECT_EQ(changes, 1);
    switchTo(oldName, oldPath, QStringLiteral("performance"));
    EXPECT_TRUE(becomes(false));
    EXPECT_EQ(changes, 2);
}

TEST_F(PowerProfilesTest, AsksADaemonThatIsInPowerSaverAlready) {
    const auto daemon = newDaemon(QStringLiteral("power-saver"));
    start();
    EXPECT_TRUE(becomes(true));
}

TEST_F(PowerProfilesTest, FollowsADaemonThatAppearsLateAndOneThatIsStartedAgain) {
    start();
    for (int round = 0; round < 2; ++round) {
        const auto daemon = oldDaemon();
        switchTo(oldName, oldPath, QStringLiteral("power-saver"));
        EXPECT_TRUE(becomes(true));
        daemon->stop();
        EXPECT_TRUE(becomes(false));
    }
}

TEST_F(PowerProfilesTest, KeepsTheModeWhileTheDaemonOrTheBusIsStartedAgain) {
    PowerProfiles keeping{systemBus, sysfs.path};
    QElapsedTimer sinceStop;
    int switches = 0;
    const Subscription counts = keeping.onPowerStateChanged([&] { ++switches; });
    const auto becomesFor = [&](bool lowPower) {
        return waitUntil([&] { return keeping.isLowPowerModeEnabled() == lowPower; });
    };
    keeping.start();
    start(); // this one forgets soon, and so tells that the daemon has gone for both
    for (const bool withBus : {false, true}) {
        auto daemon = newDaemon(QStringLiteral("power-saver"));
        ASSERT_TRUE(becomesFor(true) && becomes(true));
        switches = 0;
        sinceStop.start();
        if (withBus)
            bus.stop();
        else
            daemon->stop();
        ASSERT_TRUE(becomes(false));
        EXPECT_TRUE(keeping.isLowPowerModeEnabled());
        daemon.reset();
        if (withBus)
            bus.start();
        daemon = newDaemon(QStringLiteral("power-saver"));
        ASSERT_TRUE(becomes(true));
        const int beyondKeeping = withBus ? 0 : 11'000; // ms; once is enough
        ASSERT_TRUE(waitUntil([&] { return sinceStop.elapsed() > beyondKeeping; }, std::chrono::seconds(20)));
        EXPECT_EQ(switches, 0);
        switchTo(newName, newPath, QStringLiteral("balanced"));
        ASSERT_TRUE(becomesFor(false) && becomes(false));
        daemon->stop();
    }
}

TEST_F(PowerProfilesTest, SurvivesABusThatAppearsLateAndIsStartedAgain) {
    bus.stop();
    start();
    EXPECT_FALSE(profiles.isLowPowerModeEnabled());
    for (int round = 0; round < 2; ++round) {
        bus.start();
        {
            const auto daemon = oldDaemon();
            switchTo(oldName, oldPath, QStringLiteral("power-saver"));
            EXPECT_TRUE(becomes(true));
        }
        bus.stop();
        EXPECT_TRUE(becomes(false));
    }
}

TEST_F(PowerProfilesTest, HearsOnlyOfTheDaemonItself) {
    const auto daemon = newDaemon(QStringLiteral("power-saver"));
    start();
    ASSERT_TRUE(becomes(true));
    for (const char* other : {"", "no name", "nodot", ":1.1", "/", "\xc3\xa4.\xc3\xa4", "org.freedesktop.UPower"}) {
        tell({QString::fromUtf8(other), QVariantMap(), QStringList{activeProfile}});
        tell({QString::fromUtf8(other), toProfile("balanced"), QStringList()});
    }
    expectNothingHeard();
}

TEST_F(PowerProfilesTest, HearsNoSignalOfOtherTypes) {
    const auto daemon = newDaemon(QStringLiteral("power-saver"));
    start();
    ASSERT_TRUE(becomes(true));
    const QVariantMap balanced = toProfile("balanced");
    const QStringList none;
    tell({newName, balanced, balanced}, "sa{sv}a{sv}");
    tell({newName, none, none}, "sasas");
    tell({balanced, balanced, none}, "a{sv}a{sv}as");
    tell({newName, QStringLiteral("balanced"), none}, "ssas");
    tell({newName, balanced}, "sa{sv}");
    tell({newName, balanced, none, none}, "sa{sv}asas");
    expectNothingHeard();
}

// The distribution's daemon, on a machine whose firmware is a folder and where polkit allows everything.
TEST_F(PowerProfilesTest, FollowsTheRealDaemon) {
    TemporaryFolder machine;
    const auto firmware = machine.path / "sys/firmware/acpi";
    std::filesystem::create_directories(firmware);
    write(firmware / "platform_profile", "balanced\n");
    write(firmware / "platform_profile_choices", "low-power balanced performance\n");
    const QString polkit = QStringLiteral("org.freedesktop.PolicyKit1");
    const StandIn authority(bus, polkit, {QStringLiteral("--template"), QStringLiteral("polkitd")});
    bus.call(polkit, QStringLiteral("/org/freedesktop/PolicyKit1/Authority"), mock, QStringLiteral("AllowUnknown"),
             {true});
    const BusService daemon(bus, oldName, QStringLiteral("/usr/libexec/power-profiles-daemon"), {},
                            {{QStringLiteral("UMOCKDEV_DIR"), QString::fromStdString(machine.path.string())}});
    const auto choose = [&](const char* profile) {
        bus.call(oldName, oldPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"),
                 {oldName, activeProfile, QVariant::fromValue(QDBusVariant(QString::fromLatin1(profile)))});
    };
    start();
    choose("power-saver");
    EXPECT_TRUE(becomes(true));
    EXPECT_EQ(contentOf(firmware / "platform_profile"), "low-power");
    choose("balanced");
    EXPECT_TRUE(becomes(false));
    choose("performance");
    // The user presses a key of the laptop, and the firmware itself changes the profile.
    write(firmware / "platform_profile", "low-power\n");
    EXPECT_TRUE(becomes(true));
}

TEST_F(PowerProfilesTest, BelievesTheFirmwareWhereNoDaemonIs) {
    std::filesystem::create_directories(sysfs.path / "firmware/acpi");
    write(sysfs.path / "firmware/acpi/platform_profile", "low-power\n");
    start();
    EXPECT_TRUE(profiles.isLowPowerModeEnabled());
    // The daemon takes precedence.
    const auto daemon = oldDaemon();
    switchTo(oldName, oldPath, QStringLiteral("balanced"));
    EXPECT_TRUE(becomes(false));
    daemon->stop();
    EXPECT_TRUE(becomes(true));
}
