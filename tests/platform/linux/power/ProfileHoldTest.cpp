// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ProfileHold.h"

#include "platform/linux/bus/SystemBus.h"
#include "platform/linux/session/QtMainLoop.h"
#include "support/PowerProfileNames.h"
#include "support/PrivateBus.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace {

const QString polkit = QStringLiteral("org.freedesktop.PolicyKit1");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");

class ProfileHoldTest : public testing::Test {
protected:
    PrivateBus bus;
    QtMainLoop loop;
    std::unique_ptr<SystemBus> systemBus = std::make_unique<SystemBus>(bus.socket(), loop);
    std::unique_ptr<ProfileHold> hold = std::make_unique<ProfileHold>(*systemBus);
    int changes = 0;
    Subscription subscription = hold->onSwitchChanged([this] { ++changes; });

    void start() {
        hold->start();
        systemBus->start();
    }

    /// Starts, with a service that is there, and waits for what it offers.
    void startOffered() {
        start();
        ASSERT_TRUE(becomesOffered(true));
    }

    bool becomesOffered(bool offered) {
        return waitUntil([&] { return hold->isOffered() == offered; });
    }
    bool becomesHeld(bool held) {
        return waitUntil([&] { return hold->isHeld() == held; });
    }

    static QVariant profilesBy(const char* driver) {
        QList<QVariantMap> profiles;
        for (const char* profile : {"power-saver", "balanced"})
            profiles.append({{QStringLiteral("Profile"), QString::fromLatin1(profile)},
                             {QStringLiteral("Driver"), QString::fromLatin1(driver)}});
        qDBusRegisterMetaType<QList<QVariantMap>>();
        return QVariant::fromValue(QDBusVariant(QVariant::fromValue(profiles)));
    }

    /// A stand-in with the profiles of this driver, whose HoldProfile runs `code` of python-dbusmock.
    std::unique_ptr<StandIn> standIn(const char* driver, const char* code, const QString& name = newName) {
        const QString path = QLatin1Char('/') + QString(name).replace(QLatin1Char('.'), QLatin1Char('/'));
        auto service = std::make_unique<StandIn>(bus, name, QStringList{name, path, name});
        bus.call(name, path, mock, QStringLiteral("AddMethod"),
                 {name, QStringLiteral("HoldProfile"), QStringLiteral("sss"), QStringLiteral("u"),
                  QString::fromLatin1(code)});
        bus.call(name, path, mock, QStringLiteral("AddMethod"),
                 {name, QStringLiteral("ReleaseProfile"), QStringLiteral("u"), QString(), QString()});
        bus.call(name, path, mock, QStringLiteral("AddProperty"),
                 {name, QStringLiteral("Profiles"), profilesBy(driver)});
        return service;
    }

    /// The stand-in has other profiles from now on.
    void update(const QVariant& profiles) const {
        bus.call(newName, newPath, mock, QStringLiteral("UpdateProperties"),
                 {newName, QVariantMap{{QStringLiteral("Profiles"), profiles.value<QDBusVariant>().variant()}}});
    }

    /// How often the stand-in was called.
    int calls(const char* method) const {
        QDBusMessage message = QDBusMessage::createMethodCall(newName, newPath, mock, QStringLiteral("GetMethodCalls"));
        message << QString::fromLatin1(method);
        const QDBusMessage reply = bus.connection().call(message, QDBus::Block, 5000);
        QList<QVariantList> all;
        const auto argument = reply.arguments().value(0).value<QDBusArgument>();
        int count = 0;
        argument.beginArray();
        while (!argument.atEnd()) {
            argument.beginStructure();
            qulonglong time = 0;
            QVariantList arguments;
            argument >> time >> arguments;
            argument.endStructure();
            last = arguments;
            ++count;
        }
        argument.endArray();
        return count;
    }
    mutable QVariantList last; ///< the arguments of the last of those calls
};

/// The distribution's daemon, on a machine whose firmware is a folder, with a stand-in for polkit.
class RealProfileHoldTest : public ProfileHoldTest {
protected:
    TemporaryFolder machine;
    std::filesystem::path firmware = machine.path / "sys/firmware/acpi";
    std::optional<StandIn> authority;
    std::unique_ptr<BusService> daemon;

    void startDaemon(bool hasFirmware = true) {
        if (hasFirmware) {
            std::filesystem::create_directories(firmware);
            write(firmware / "platform_profile", "balanced\n");
            write(firmware / "platform_profile_choices", "low-power balanced performance\n");
        }
        if (!authority)
            authority.emplace(bus, polkit, QStringList{QStringLiteral("--template"), QStringLiteral("polkitd")});
        const QString oldestName = oldName;
        daemon = std::make_unique<BusService>(
            bus, oldestName, QStringLiteral("/usr/libexec/power-profiles-daemon"), QStringList(),
            QMap<QString, QString>{{QStringLiteral("UMOCKDEV_DIR"), QString::fromStdString(machine.path.string())}});
    }
    void allow(bool all) {
        bus.call(polkit, QStringLiteral("/org/freedesktop/PolicyKit1/Authority"), mock, QStringLiteral("AllowUnknown"),
                 {all});
    }
    void choose(const char* profile) {
        bus.call(oldName, oldPath, properties, QStringLiteral("Set"),
                 {oldName, QStringLiteral("ActiveProfile"),
                  QVariant::fromValue(QDBusVariant(QString::fromLatin1(profile)))});
    }
    std::string profile() { return contentOf(firmware / "platform_profile"); }
    bool firmwareBecomes(const char* content) {
        return waitUntil([&] { return profile() == content; });
    }
};

} // namespace

TEST_F(RealProfileHoldTest, HoldsPowerSaverAndGivesBackWhatTheUserHadChosen) {
    startDaemon();
    allow(true);
    choose("performance");
    EXPECT_TRUE(firmwareBecomes("performance"));
    start();
    ASSERT_TRUE(becomesOffered(true));
    EXPECT_FALSE(hold->isHeld());
    hold->hold();
    ASSERT_TRUE(becomesHeld(true));
    EXPECT_TRUE(firmwareBecomes("low-power"));
    const int before = changes;
    hold->release();
    EXPECT_FALSE(hold->isHeld());
    EXPECT_EQ(changes, before + 1);
    EXPECT_TRUE(firmwareBecomes("performance"));
    EXPECT_TRUE(hold->isOffered());
}

TEST_F(RealProfileHoldTest, EndsWhenTheUserChoosesAnotherProfile) {
    startDaemon();
    allow(true);
    startOffered();
    hold->hold();
    ASSERT_TRUE(becomesHeld(true));
    choose("balanced");
    EXPECT_TRUE(becomesHeld(false));
    EXPECT_TRUE(firmwareBecomes("balanced"));
    hold->hold();
    EXPECT_TRUE(becomesHeld(true));
}

TEST_F(RealProfileHoldTest, EndsWithTheProgram) {
    startDaemon();
    allow(true);
    startOffered();
    hold->hold();
    ASSERT_TRUE(becomesHeld(true));
    EXPECT_TRUE(firmwareBecomes("low-power"));
    hold.reset();
    systemBus.reset();
    EXPECT_TRUE(firmwareBecomes("balanced"));
}

TEST_F(RealProfileHoldTest, ARefusedHoldIsNotOfferedAgainUntilTheDaemonIsStartedAgain) {
    startDaemon();
    startOffered();
    hold->hold();
    EXPECT_TRUE(becomesOffered(false));
    EXPECT_FALSE(hold->isHeld());
    EXPECT_EQ(profile(), "balanced\n") << "as the test wrote it";
    allow(true);
    hold->hold();
    EXPECT_FALSE(hold->isOffered()) << "nothing further";
    daemon->stop();
    startDaemon();
    ASSERT_TRUE(becomesOffered(true));
    hold->hold();
    EXPECT_TRUE(becomesHeld(true));
    daemon->stop();
    EXPECT_TRUE(becomesHeld(false));
    EXPECT_FALSE(hold->isOffered());
}

TEST_F(RealProfileHoldTest, APlaceholderIsNoOffer) {
    startDaemon(false);
    start();
    // The answer to this comes after the one to the question about the profiles.
    ASSERT_TRUE(waitUntil([&] { return changes > 0; }));
    EXPECT_FALSE(hold->isOffered());
    hold->hold();
    EXPECT_FALSE(hold->isHeld());
}

TEST_F(ProfileHoldTest, AsksForTheProfileWithAReasonAndTheIdOfTheApplication) {
    const auto service = standIn("intel_pstate", "ret = 7");
    startOffered();
    hold->hold();
    hold->hold();
    ASSERT_TRUE(becomesHeld(true));
    EXPECT_EQ(calls("HoldProfile"), 1);
    EXPECT_EQ(last,
              (QVariantList{QStringLiteral("power-saver"), QStringLiteral("Turned on in a reminder of a low battery"),
                            QStringLiteral("app.velmora.Velmora")}));
    hold->release();
    hold->release();
    ASSERT_TRUE(waitUntil([&] { return calls("ReleaseProfile") == 1; }));
    EXPECT_EQ(last, QVariantList{7U});
}

TEST_F(ProfileHoldTest, LetsGoOfAHoldThatComesTooLate) {
    const auto service = standIn("intel_pstate", "ret = 7");
    startOffered();
    hold->hold();
    hold->release(); // plugged in meanwhile
    ASSERT_TRUE(waitUntil([&] { return calls("ReleaseProfile") == 1; }));
    EXPECT_EQ(last, QVariantList{7U});
    EXPECT_FALSE(hold->isHeld());
    EXPECT_TRUE(hold->isOffered());
}

TEST_F(ProfileHoldTest, HearsOnlyOfItsOwnHold) {
    const auto service = standIn("intel_pstate", "ret = 7");
    startOffered();
    hold->hold();
    ASSERT_TRUE(becomesHeld(true));
    const auto tell = [&](const char* signature, const QVariant& argument) {
        bus.call(newName, newPath, mock, QStringLiteral("EmitSignal"),
                 {newName, QStringLiteral("ProfileReleased"), QString::fromLatin1(signature),
                  QVariantList{QVariant::fromValue(QDBusVariant(argument))}});
    };
    const int before = changes;
    tell("u", 8U);
    tell("s", QStringLiteral("7"));
    tell("i", 7);
    update(profilesBy("amd_pstate")); // once this is heard, so is all before it
    ASSERT_TRUE(waitUntil([&] { return changes > before; }));
    EXPECT_TRUE(hold->isHeld());
    tell("u", 7U);
    EXPECT_TRUE(becomesHeld(false));
    EXPECT_EQ(changes, before + 2);
}

TEST_F(ProfileHoldTest, ARefusingServiceIsAskedOnce) {
    const auto service = standIn(
        "intel_pstate", "raise dbus.exceptions.DBusException('no', name='org.freedesktop.DBus.Error.AccessDenied')");
    startOffered();
    hold->hold();
    ASSERT_TRUE(becomesOffered(false));
    hold->hold();
    update(profilesBy("amd_pstate"));
    ASSERT_TRUE(waitUntil([&] { return changes >= 3; })) << "it has heard of the property";
    EXPECT_FALSE(hold->isOffered());
    EXPECT_EQ(calls("HoldProfile"), 1);
}

TEST_F(ProfileHoldTest, FollowsWhatTheServiceOffers) {
    const auto service = standIn("placeholder", "ret = 7");
    start();
    ASSERT_TRUE(waitUntil([&] { return changes > 0; }));
    EXPECT_FALSE(hold->isOffered());
    update(profilesBy("amd_pstate"));
    EXPECT_TRUE(becomesOffered(true));
    update(QVariant::fromValue(QDBusVariant(QStringLiteral("power-saver")))); // of another type
    EXPECT_TRUE(becomesOffered(false));
}

TEST_F(ProfileHoldTest, WithoutABusThereIsNoOffer) {
    bus.stop();
    start();
    EXPECT_FALSE(hold->isOffered());
    hold->hold();
    hold->release();
    bus.start();
    const auto service = standIn("amd_pstate", "ret = 1", oldName);
    EXPECT_TRUE(becomesOffered(true));
    hold->hold();
    EXPECT_TRUE(becomesHeld(true));
    bus.stop();
    EXPECT_TRUE(becomesHeld(false));
    EXPECT_FALSE(hold->isOffered());
}
