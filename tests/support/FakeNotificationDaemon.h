// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/PrivateBus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QMap>
#include <QSet>
#include <QVariantMap>

#include <vector>

/// A notification daemon on a private bus that shows nothing, records everything and misbehaves on demand. It lives in
/// the test's own process, so it answers only while the event loop runs.
class FakeNotificationDaemon final : public QDBusVirtualObject {
    Q_OBJECT

public:
    /// A notification as it was sent.
    struct Sent {
        QString appName;
        uint replaced = 0;
        QString icon, summary, body;
        QStringList actions;
        QVariantMap hints;
        int timeout = 0;
        uint id = 0; ///< the id in the answer
    };

    /// How the daemon treats a method call.
    enum class Manner {
        answers,
        waits,         ///< until `answerWaiting`
        refuses,       ///< with the error `refusal`
        talksNonsense, ///< with `nonsense`
    };

    /// `name` is the name of the connection, one for each daemon. The daemon is on the bus, but does not own the
    /// well-known name yet.
    FakeNotificationDaemon(const PrivateBus& bus, const QString& name);
    ~FakeNotificationDaemon() override;

    void appear();
    /// Takes another name as well.
    void appearAs(const QString& name);
    /// Queues for the well-known name.
    void appearNext();
    bool hasName() const;
    void leave();
    /// Like `leave`, but also closes the connection, as when a program ends.
    void die();

    QString serverName = QStringLiteral("test");
    QStringList capabilities{QStringLiteral("body"), QStringLiteral("actions")};
    QVariantMap properties; ///< "interface.name" to value
    QMap<QString, Manner> manners;
    QVariantList nonsense;
    QString refusal = QStringLiteral("test.Refused");
    uint nextId = 1;
    bool forgetsIds = false; ///< refuses to replace anything

    QStringList calls; ///< the methods that were called, in order
    std::vector<Sent> sent;
    QList<uint> closed; ///< by the program
    QSet<uint> shown;

    qsizetype count(const QString& method) const { return calls.count(method); }
    void answerWaiting();

    /// Returns when the bus has handled everything sent from here, and everything it had for us has arrived.
    void roundTrip() const;

    void closeByUser(uint id, uint reason = 2);
    void invoke(uint id, const QString& key);
    void tell(const QString& signal, const QVariantList& arguments);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QDBusConnection connection_;
    std::vector<QDBusMessage> waiting_;

    void answer(const QDBusMessage& message);
    void notify(const QDBusMessage& message);
};
