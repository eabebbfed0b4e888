// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QObject>
#include <QStringList>

/// A StatusNotifierWatcher on a private bus that records the items registered with it. The program does not know its
/// process as a panel.
class Watcher final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isStatusNotifierHostRegistered)

public:
    static QString serviceName() { return QStringLiteral("org.kde.StatusNotifierWatcher"); }
    static QString path() { return QStringLiteral("/StatusNotifierWatcher"); }

    /// `name` is the name of its connection; each watcher of a test needs another.
    Watcher(const PrivateBus& bus, const QString& name)
        : connection_(QDBusConnection::connectToBus(bus.address(), name)) {
        connection_.registerObject(path(), this, QDBusConnection::ExportAllContents);
    }
    ~Watcher() override { QDBusConnection::disconnectFromBus(connection_.name()); }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    /// Takes the name, also from an owner that allows it.
    void takeName() {
        connection_.interface()->registerService(serviceName(), QDBusConnectionInterface::ReplaceExistingService,
                                                 QDBusConnectionInterface::AllowReplacement);
    }
    /// Takes the name, and queues for it if it is taken away.
    void takeNameAndQueue() {
        connection_.interface()->registerService(serviceName(), QDBusConnectionInterface::QueueService,
                                                 QDBusConnectionInterface::AllowReplacement);
    }
    void leave() { connection_.interface()->unregisterService(serviceName()); }

    bool isStatusNotifierHostRegistered() const {
        ++questions_;
        return hasHost;
    }
    /// How often an item asked whether there is a panel.
    int questions() const { return questions_; }

    /// Asks the last registered item for its title, as panels do.
    QDBusPendingCall askForTitle() const {
        auto message =
            QDBusMessage::createMethodCall(items.value(items.size() - 1), QStringLiteral("/StatusNotifierItem"),
                                           QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        message << QStringLiteral("org.kde.StatusNotifierItem") << QStringLiteral("Title");
        return connection_.asyncCall(message);
    }

    QStringList items;
    bool hasHost = true; ///< whether there is a panel behind it

Q_SIGNALS:
    void StatusNotifierHostRegistered();

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& item) { items.append(item); }

private:
    QDBusConnection connection_;
    mutable int questions_ = 0;
};
