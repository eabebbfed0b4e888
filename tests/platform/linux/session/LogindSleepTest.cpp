// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/LogindSleep.h"

#include "platform/linux/bus/SystemBus.h"
#include "platform/linux/session/QtMainLoop.h"
#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

#include <QDBusArgument>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

const QString name = QStringLiteral("org.freedesktop.login1");
const QString path = QStringLiteral("/org/freedesktop/login1");
const QString manager = QStringLiteral("org.freedesktop.login1.Manager");

class LogindSleepTest : public testing::Test {
protected:
    PrivateBus bus;
    QtMainLoop loop;
    SystemBus systemBus{bus.socket(), loop};
    bool isDiskSlow = false;
    std::vector<LogindSleep::Task> waiting; ///< for the disk
    LogindSleep sleep{systemBus, [this](LogindSleep::Task task) {
                          if (isDiskSlow)
                              waiting.push_back(std::move(task));
                      }};
    int sleeps = 0;
    int wakes = 0;
    int locksAtSleep = -1;
    Subscription onSleep = sleep.willSleep.add([this] {
        ++sleeps;
        locksAtSleep = locks();
    });
    Subscription onWake = sleep.didWake.add([this] { ++wakes; });

    void start() {
        sleep.start();
        systemBus.start();
    }

    std::unique_ptr<StandIn> logind() {
        return std::make_unique<StandIn>(bus, name,
                                         QStringList{QStringLiteral("--template"), QStringLiteral("logind")});
    }

    /// The number of delay locks for sleep that Velmora holds, according to logind.
    int locks() const {
        const QVariant list = bus.call(name, path, manager, QStringLiteral("ListInhibitors"));
        const auto argument = list.value<QDBusArgument>();
        int count = 0;
        argument.beginArray();
        while (!argument.atEnd()) {
            QString what, who, why, mode;
            uint user = 0, process = 0;
            argument.beginStructure();
            argument >> what >> who >> why >> mode >> user >> process;
            argument.endStructure();
            count +=
                what == QLatin1String("sleep") && who == QLatin1String("Velmora") && mode == QLatin1String("delay");
        }
        argument.endArray();
        return count;
    }

    /// Sends PrepareForSleep with one argument.
    void announce(const QVariant& argument, const char* signature = "b") const {
        bus.call(name, path, QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("EmitSignal"),
                 {manager, QStringLiteral("PrepareForSleep"), QString::fromLatin1(signature),
                  QVariantList{QVariant::fromValue(QDBusVariant(argument))}});
    }

    bool holdsLocks(int count) {
        return waitUntil([&] { return locks() == count; });
    }
};

} // namespace

TEST_F(LogindSleepTest, HoldsALockUntilTheSaveIsDoneAndTakesItAgainAfterWaking) {
    const auto service = logind();
    start();
    ASSERT_TRUE(holdsLocks(1));
    for (int round = 1; round <= 2; ++round) {
        announce(true);
        ASSERT_TRUE(waitUntil([&] { return sleeps == round; }));
        EXPECT_EQ(locksAtSleep, 1) << "still held while the save goes on";
        ASSERT_TRUE(holdsLocks(0));
        announce(false);
        ASSERT_TRUE(waitUntil([&] { return wakes == round; }));
        ASSERT_TRUE(holdsLocks(1));
    }
}

TEST_F(LogindSleepTest, HoldsTheLockUntilASlowDiskIsDone) {
    const auto service = logind();
    start();
    ASSERT_TRUE(holdsLocks(1));
    isDiskSlow = true;
    announce(true);
    ASSERT_TRUE(waitUntil([&] { return sleeps == 1; }));
    EXPECT_EQ(locks(), 1);
    waiting.clear();
    EXPECT_TRUE(holdsLocks(0));
    // The machine does not wait for ever. A lock that was still held does not take the next one along.
    announce(false);
    ASSERT_TRUE(holdsLocks(1));
    announce(true);
    announce(false);
    ASSERT_TRUE(waitUntil([&] { return wakes == 2; }));
    ASSERT_TRUE(holdsLocks(2));
    waiting.clear();
    EXPECT_TRUE(holdsLocks(1));
}

TEST_F(LogindSleepTest, HearsNoSignalOfAnotherType) {
    const auto service = logind();
    start();
    ASSERT_TRUE(holdsLocks(1));
    announce(QStringLiteral("true"), "s");
    announce(1, "i");
    announce(QVariantMap{{QStringLiteral("a"), true}}, "a{sv}");
    announce(QVariantList{true}, "av");
    announce(true);
    ASSERT_TRUE(waitUntil([&] { return sleeps > 0; }));
    EXPECT_EQ(sleeps, 1);
    EXPECT_EQ(wakes, 0);
}

TEST_F(LogindSleepTest, FollowsALogindThatAppearsLateAndOneThatIsStartedAgain) {
    start();
    for (int round = 1; round <= 2; ++round) {
        const auto service = logind();
        ASSERT_TRUE(holdsLocks(1));
        announce(true);
        ASSERT_TRUE(waitUntil([&] { return sleeps == round; }));
        announce(false);
        ASSERT_TRUE(waitUntil([&] { return wakes == round; }));
    }
}

TEST_F(LogindSleepTest, IsAwakeWhenALogindIsStartedAgainThatKnowsOfNoSleep) {
    start();
    {
        const auto service = logind();
        ASSERT_TRUE(holdsLocks(1));
        announce(true);
        ASSERT_TRUE(waitUntil([&] { return sleeps == 1; }));
        EXPECT_EQ(wakes, 0);
    }
    EXPECT_TRUE(waitUntil([&] { return wakes == 1; }));
    const auto service = logind();
    EXPECT_TRUE(holdsLocks(1));
    EXPECT_EQ(wakes, 1);
}

TEST_F(LogindSleepTest, FollowsABusThatAppearsLateAndIsStartedAgain) {
    bus.stop();
    start();
    for (int round = 0; round < 2; ++round) {
        bus.start();
        {
            const auto service = logind();
            EXPECT_TRUE(holdsLocks(1));
        }
        bus.stop();
    }
}
