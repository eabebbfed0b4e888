// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/LibraryMessages.h"

#include "support/WaitUntil.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QObject>
#include <QProcess>
#include <gtest/gtest.h>

namespace {

class Listener final : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void changed(const QDBusMessage& /*message*/) {}
};

} // namespace

TEST(LibraryMessages, DoNotEndTheProgramWhenABusGoesWhileItsSignalsAreAskedFor) {
    dropLibraryMessages();
    Listener listener;
    for (int i = 0; i < 20; ++i) {
        QProcess daemon;
        daemon.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        ASSERT_TRUE(waitUntil([&] { return daemon.canReadLine(); }));
        const QString name = QStringLiteral("bus%1").arg(i);
        QDBusConnection bus = QDBusConnection::connectToBus(QString::fromUtf8(daemon.readLine()).trimmed(), name);
        ASSERT_TRUE(bus.interface()->registeredServiceNames().isValid());
        daemon.kill();
        for (int service = 0; service < 30; ++service)
            bus.connect(QStringLiteral("org.example.S%1").arg(service), QStringLiteral("/"),
                        QStringLiteral("org.example.S"), QStringLiteral("Changed"), &listener,
                        SLOT(changed(QDBusMessage)));
        daemon.waitForFinished();
        QDBusConnection::disconnectFromBus(name);
    }
}

#include "LibraryMessagesTest.moc"
