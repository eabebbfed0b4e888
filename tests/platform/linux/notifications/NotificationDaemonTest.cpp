// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/NotificationDaemon.h"

#include "support/NotificationsFixture.h"
#include "support/Soak.h"

#include <QDBusConnectionInterface>

#include <csignal>
#include <fstream>

/// Daemons that come, go, hang and talk nonsense.
class NotificationDaemonTest : public NotificationsFixture {
protected:
    /// For calls that the daemon never answers.
    static constexpr NotificationDaemon::Timeouts shortTimeouts{.abilities = std::chrono::milliseconds(50),
                                                                .doNotDisturb = std::chrono::milliseconds(50),
                                                                .notify = std::chrono::milliseconds(300)};

    bool isSent(std::size_t times) {
        return waitUntil([&] { return daemon.sent.size() == times; });
    }

    /// From now on the bus starts a daemon when a call finds none running. The first id that this daemon gives is 1.
    void installDaemon() {
        write(bus.services() / "notifications.service",
              "[D-BUS Service]\nName=org.freedesktop.Notifications\n"
              "Exec=/usr/bin/python3 -m dbusmock --session --template notification_daemon\n");
        const QString dbus = QStringLiteral("org.freedesktop.DBus");
        bus.call(dbus, QStringLiteral("/org/freedesktop/DBus"), dbus, QStringLiteral("ReloadConfig"));
    }

    /// For each notification that the installed daemon received, the id it was to replace; empty while there is no
    /// daemon.
    QList<uint> idsReplacedInTheInstalledOne() {
        QList<uint> ids;
        if (!bus.has(service))
            return ids;
        const QVariant calls = bus.call(service, QStringLiteral("/org/freedesktop/Notifications"),
                                        QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("GetMethodCalls"),
                                        {QStringLiteral("Notify")});
        if (!calls.canConvert<QDBusArgument>())
            return ids;
        const auto argument = calls.value<QDBusArgument>();
        for (argument.beginArray(); !argument.atEnd();) {
            qulonglong time = 0;
            QVariantList arguments;
            argument.beginStructure();
            argument >> time >> arguments;
            argument.endStructure();
            ids.append(arguments.value(1).toUInt());
        }
        argument.endArray();
        return ids;
    }

    void killInstalledDaemon() {
        const uint process = bus.connection().interface()->servicePid(service).value();
        ASSERT_GT(process, 1U);
        ::kill(static_cast<pid_t>(process), SIGKILL);
        EXPECT_TRUE(waitUntil([&] { return !bus.has(service); }));
    }

    const QString service = QStringLiteral("org.freedesktop.Notifications");
};

namespace {

/// Resident memory in KiB.
long resident() {
    std::ifstream file("/proc/self/statm");
    long size = 0, pages = 0;
    file >> size >> pages;
    return pages * 4;
}

} // namespace

TEST_F(NotificationDaemonTest, IsSilentlyMissed) {
    start();
    settle();
    for (int i = 0; i < 3; ++i)
        add(request("low", "A", "Glass"));
    center->removeDelivered({"low"});
    EXPECT_EQ(sounds.played, std::vector<std::string>());
    daemon.appear();
    settle();
    EXPECT_EQ(daemon.calls, QStringList()) << "what nobody showed is not shown late";
    add(request("low", "B"));
    ASSERT_EQ(daemon.sent.size(), 1U);
    EXPECT_EQ(daemon.sent[0].summary, QStringLiteral("B"));
    EXPECT_EQ(daemon.sent[0].actions.size(), 2);
}

TEST_F(NotificationDaemonTest, IsStartedOnDemand) {
    installDaemon();
    start();
    center->add(request("low"));
    EXPECT_TRUE(waitUntil([&] { return idsReplacedInTheInstalledOne() == QList<uint>{0}; }));
    killInstalledDaemon();
}

TEST_F(NotificationDaemonTest, IsStartedAnewForWhatItDidNotLiveToAnswer) {
    daemon.manners[QStringLiteral("Notify")] = Manner::waits;
    daemon.appear();
    start();
    center->add(request("low"));
    ASSERT_TRUE(waitUntil([&] { return daemon.count(QStringLiteral("Notify")) == 1; }));
    installDaemon();
    daemon.die();
    ASSERT_TRUE(waitUntil([&] { return idsReplacedInTheInstalledOne() == QList<uint>{0}; }));
    roundTrip(connection); // by now the installed daemon's answer has arrived
    QCoreApplication::processEvents();
    center->add(request("low"));
    EXPECT_TRUE(waitUntil([&] { return idsReplacedInTheInstalledOne().size() == 2; }));
    EXPECT_EQ(idsReplacedInTheInstalledOne(), (QList<uint>{0, 1})) << "what it has answered counts";
    killInstalledDaemon();
}

TEST_F(NotificationDaemonTest, MayBeReplacedBetweenTwo) {
    daemon.appear();
    start();
    add(request("low"));
    add(request("health"));
    EXPECT_EQ(daemon.shown.size(), 2);
    FakeNotificationDaemon next(bus, QStringLiteral("next"));
    next.capabilities.clear();
    next.appearNext();
    daemon.die();
    ASSERT_TRUE(waitUntil([&] { return next.hasName(); }));
    settle();
    next.invoke(1, QStringLiteral("SNOOZE"));
    center->add(request("low"));
    ASSERT_TRUE(waitUntil([&] { return next.sent.size() == 1; }));
    EXPECT_EQ(next.sent[0].replaced, 0U) << "under this number it may show a stranger's";
    EXPECT_EQ(next.sent[0].actions, QStringList()) << "it was asked anew";
    EXPECT_EQ(delegate.received, std::vector<std::string>());
    center->removeDelivered({"health"});
    roundTrip(connection);
    next.roundTrip();
    QCoreApplication::processEvents();
    EXPECT_EQ(next.closed, QList<uint>());
}

TEST_F(NotificationDaemonTest, IsReplacedByOneThatGetsWhatItDidNotAnswer) {
    for (const char* method : {"GetServerInformation", "GetCapabilities", "Get", "Notify"}) {
        FakeNotificationDaemon first(bus, QStringLiteral("first"));
        FakeNotificationDaemon next(bus, QStringLiteral("next"));
        first.manners[QString::fromLatin1(method)] = Manner::waits;
        first.appear();
        start();
        center->add(request("low"));
        ASSERT_TRUE(waitUntil([&] { return first.calls.contains(QString::fromLatin1(method)); })) << method;
        // The next daemon queues for the name.
        next.appearNext();
        first.die();
        ASSERT_TRUE(waitUntil([&] { return next.sent.size() == 1; })) << method;
        EXPECT_EQ(next.sent[0].replaced, 0U) << method;
        center.reset();
        next.die();
    }
}

TEST_F(NotificationDaemonTest, IsReplacedByOneThatDoesNotKnowItsIds) {
    for (const char* method : {"Get", "Notify"}) {
        FakeNotificationDaemon first(bus, QStringLiteral("first"));
        FakeNotificationDaemon next(bus, QStringLiteral("next"));
        first.appear();
        start();
        center->add(request("low"));
        ASSERT_TRUE(waitUntil([&] { return first.sent.size() == 1; })) << method;
        first.manners[QString::fromLatin1(method)] = Manner::waits;
        first.calls.clear();
        center->add(request("low"));
        ASSERT_TRUE(waitUntil([&] { return first.calls.contains(QString::fromLatin1(method)); })) << method;
        next.appearNext();
        first.die();
        ASSERT_TRUE(waitUntil([&] { return next.sent.size() == 1; })) << method;
        EXPECT_EQ(next.sent[0].replaced, 0U) << method;
        center.reset();
        next.die();
    }
}

TEST_F(NotificationDaemonTest, GetsNothingThatWasMeantForTheOneBeforeIt) {
    daemon.appear();
    start();
    add(request("low"));
    ASSERT_EQ(daemon.sent.size(), 1U);
    daemon.manners[QStringLiteral("Get")] = Manner::waits;
    add(request("low"));
    FakeNotificationDaemon next(bus, QStringLiteral("next"));
    // All of this happens before the adapter hears of any of it, so it still believes that the first daemon is there.
    daemon.answerWaiting();
    daemon.roundTrip();
    next.appearNext();
    daemon.die();
    roundTrip(connection);
    ASSERT_TRUE(waitUntil([&] { return next.sent.size() == 1; }));
    EXPECT_EQ(next.sent[0].replaced, 0U);
}

TEST_F(NotificationDaemonTest, IsNotGivenTheIdOfOneThatAnswersAfterItsTime) {
    daemon.manners[QStringLiteral("Notify")] = Manner::waits;
    daemon.nextId = 7;
    daemon.appear();
    start();
    add(request("low"));
    FakeNotificationDaemon next(bus, QStringLiteral("next"));
    daemon.leave();
    next.appear();
    settle();
    daemon.answerWaiting();
    settle();
    center->add(request("low"));
    ASSERT_TRUE(waitUntil([&] { return next.sent.size() == 1; }));
    EXPECT_EQ(next.sent[0].replaced, 0U);
}

TEST_F(NotificationDaemonTest, GetsTheLeastWhereItDoesNotTellWhatItCanDo) {
    for (const char* method : {"GetServerInformation", "GetCapabilities"}) {
        daemon.sent.clear();
        daemon.manners = {{QString::fromLatin1(method), Manner::waits}};
        daemon.appear();
        NotificationDaemon::Timeouts timeouts = shortTimeouts;
        timeouts.notify = std::chrono::seconds(20);
        start(timeouts);
        if (method == std::string_view("GetCapabilities"))
            settle(); // by then the adapter knows that the daemon is there
        center->add(request("low", "A", "Glass"));
        ASSERT_TRUE(isSent(1)) << method;
        EXPECT_EQ(daemon.sent[0].actions, QStringList()) << method;
        EXPECT_EQ(daemon.sent[0].hints.value(QStringLiteral("suppress-sound")), true) << method;
        // A late answer still serves the next notification.
        daemon.manners.clear();
        daemon.answerWaiting();
        settle();
        center->add(request("low"));
        ASSERT_TRUE(isSent(2)) << method;
        EXPECT_EQ(daemon.sent[1].actions.size(), 2) << method;
        daemon.leave();
        settle();
    }
}

TEST_F(NotificationDaemonTest, MayHaveItsNameBeforeItIsReady) {
    for (const char* error : {"UnknownMethod", "UnknownObject", "UnknownInterface"}) {
        daemon.refusal = QStringLiteral("org.freedesktop.DBus.Error.") + QString::fromLatin1(error);
        for (const char* method : {"GetServerInformation", "GetCapabilities", "Get", "Notify"})
            daemon.manners[QString::fromLatin1(method)] = Manner::refuses;
        daemon.calls.clear();
        daemon.sent.clear();
        daemon.appear();
        start();
        center->add(request("low"));
        ASSERT_TRUE(waitUntil([&] { return daemon.count(QStringLiteral("GetServerInformation")) == 2; })) << error;
        daemon.manners.clear();
        ASSERT_TRUE(isSent(1)) << error;
        EXPECT_EQ(daemon.sent[0].actions.size(), 2) << error;
        daemon.leave();
    }
}

TEST_F(NotificationDaemonTest, IsNotAskedForEver) {
    daemon.refusal = QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod");
    daemon.manners[QStringLiteral("GetServerInformation")] = Manner::refuses;
    daemon.appear();
    start(shortTimeouts);
    center->add(request("low"));
    ASSERT_TRUE(isSent(1));
    EXPECT_EQ(daemon.sent[0].actions, QStringList());
}

TEST_F(NotificationDaemonTest, MayRefuseEverything) {
    daemon.appear();
    start();
    for (const char* method : {"GetServerInformation", "GetCapabilities", "Get", "Notify", "CloseNotification"})
        daemon.manners[QString::fromLatin1(method)] = Manner::refuses;
    add(request("low", "A", "Glass"));
    EXPECT_EQ(daemon.count(QStringLiteral("Notify")), 1) << "it is tried all the same";
    EXPECT_EQ(sounds.played, std::vector<std::string>());
    daemon.manners.clear();
    add(request("low"));
    ASSERT_EQ(daemon.sent.size(), 1U);
    EXPECT_EQ(daemon.sent[0].replaced, 0U);
}

TEST_F(NotificationDaemonTest, MayTalkNonsense) {
    const QString huge(1 << 20, QLatin1Char('x'));
    const QVariantList answers[] = {{},
                                    {huge},
                                    {huge, huge, huge, huge},
                                    {QStringList(20000, QStringLiteral("actions"))},
                                    {-1},
                                    {QVariant::fromValue(QDBusVariant(huge))},
                                    {1U, 2U}};
    for (const QVariantList& answer : answers) {
        FakeNotificationDaemon liar(bus, QStringLiteral("liar"));
        for (const char* method : {"GetServerInformation", "GetCapabilities", "Get", "Notify"})
            liar.manners[QString::fromLatin1(method)] = Manner::talksNonsense;
        liar.nonsense = answer;
        liar.appear();
        start();
        for (int i = 0; i < 2; ++i) {
            center->add(request("low"));
            ASSERT_TRUE(waitUntil([&] { return liar.count(QStringLiteral("Notify")) > i; }));
            liar.tell(QStringLiteral("NotificationClosed"), answer);
            liar.tell(QStringLiteral("ActionInvoked"), answer);
        }
    }
    // Then comes a daemon that makes sense.
    daemon.appear();
    center->add(request("low"));
    EXPECT_TRUE(isSent(1));
    EXPECT_EQ(delegate.received, std::vector<std::string>());
}

TEST_F(NotificationDaemonTest, MaySendSignalsOfOtherTypes) {
    daemon.appear();
    start();
    add(request("low"));
    const uint id = daemon.sent.at(0).id;
    // Qt converts maps, lists and variants to the types that the slot wants only when the signal arrives.
    const QVariant odd[] = {QVariantMap{{QStringLiteral("a"), 1}}, QVariantList{1, QStringLiteral("b")},
                            QVariant::fromValue(QDBusVariant(id)), QStringLiteral("SNOOZE"), 7.0};
    for (const char* signal : {"NotificationClosed", "ActionInvoked"}) {
        const QVariant right =
            signal == std::string_view("NotificationClosed") ? QVariant(2U) : QStringLiteral("SNOOZE");
        for (const QVariant& one : odd) {
            daemon.tell(QString::fromLatin1(signal), {one, right});
            if (one.metaType() != right.metaType())
                daemon.tell(QString::fromLatin1(signal), {id, one});
        }
        daemon.tell(QString::fromLatin1(signal), {id});
        daemon.tell(QString::fromLatin1(signal), {id, right, right});
    }
    settle();
    EXPECT_EQ(delegate.received, std::vector<std::string>());
    // The adapter believed none of that: the notification is still there, and its button works.
    daemon.invoke(id, QStringLiteral("SNOOZE"));
    EXPECT_TRUE(waitUntil([&] { return delegate.received.size() == 1; }));
}

TEST_F(NotificationDaemonTest, MayHangWithoutAnythingPilingUp) {
    for (const char* method : {"GetServerInformation", "GetCapabilities", "Get", "Notify"})
        daemon.manners[QString::fromLatin1(method)] = Manner::waits;
    daemon.appear();
    NotificationDaemon::Timeouts timeouts = shortTimeouts;
    timeouts.notify = std::chrono::seconds(60); // longer than this test, so pending calls stay pending
    start(timeouts);
    const char* const identifiers[] = {"chargeLimit", "low", "tooLong", "health", "lowPower"};
    const auto askFor = [&](int count) {
        for (int i = 0; i < count; ++i) {
            center->add(request(identifiers[i % 5], "Title " + std::to_string(i), "Glass"));
            if (i % 100 == 0)
                settle();
        }
        settle();
    };
    askFor(1000);
    ASSERT_TRUE(waitUntil([&] { return daemon.count(QStringLiteral("Notify")) == 5; }));
    const double before = allocatedBytes();
    const long residentBefore = resident();
    askFor(10000);
    EXPECT_EQ(daemon.count(QStringLiteral("Notify")), 5) << "one of each identifier is on its way";
    EXPECT_LT(allocatedBytes(), before + 100'000) << "10 bytes for each that was asked for";
    RecordProperty("residentGrowthKiB", std::to_string(resident() - residentBefore));
    // Once the daemon answers, it gets the waiting notifications: the latest of each identifier, replacing the first.
    daemon.manners.clear();
    daemon.answerWaiting();
    ASSERT_TRUE(isSent(10));
    EXPECT_EQ(daemon.shown.size(), 5);
}

TEST_F(NotificationDaemonTest, IsTriedAgainWhenItHasNotAnsweredForLong) {
    daemon.manners[QStringLiteral("Notify")] = Manner::waits;
    daemon.appear();
    start({.abilities = std::chrono::seconds(20),
           .doNotDisturb = std::chrono::seconds(20),
           .notify = std::chrono::milliseconds(300)});
    center->add(request("low", "A"));
    ASSERT_TRUE(waitUntil([&] { return daemon.count(QStringLiteral("Notify")) == 1; }));
    center->add(request("low", "B"));
    ASSERT_TRUE(waitUntil([&] { return daemon.count(QStringLiteral("Notify")) == 2; }));
}
