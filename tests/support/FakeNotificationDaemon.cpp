// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeNotificationDaemon.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusVariant>

#include <utility>

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

} // namespace

FakeNotificationDaemon::FakeNotificationDaemon(const PrivateBus& bus, const QString& name)
    : connection_(QDBusConnection::connectToBus(bus.address(), name)) {
    for (const QString& object : {path, QStringLiteral("/fr/emersion/Mako"), QStringLiteral("/org/xfce/Xfconf")})
        connection_.registerVirtualObject(object, this);
}

FakeNotificationDaemon::~FakeNotificationDaemon() {
    die();
}

void FakeNotificationDaemon::appear() {
    appearAs(service);
}

void FakeNotificationDaemon::appearAs(const QString& name) {
    connection_.registerService(name);
}

void FakeNotificationDaemon::appearNext() {
    connection_.interface()->registerService(service, QDBusConnectionInterface::QueueService);
}

bool FakeNotificationDaemon::hasName() const {
    return connection_.interface()->serviceOwner(service).value() == connection_.baseService();
}

void FakeNotificationDaemon::leave() {
    connection_.unregisterService(service);
}

void FakeNotificationDaemon::die() {
    if (!connection_.isConnected())
        return;
    leave(); // QtDBus closes a connection only some time later
    const QString name = connection_.name();
    connection_ = QDBusConnection(QStringLiteral("none"));
    QDBusConnection::disconnectFromBus(name);
}

QString FakeNotificationDaemon::introspect(const QString& /*path*/) const {
    return {};
}

bool FakeNotificationDaemon::handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) {
    calls.append(message.member());
    switch (manners.value(message.member(), Manner::answers)) {
    case Manner::answers:
        answer(message);
        break;
    case Manner::waits:
        waiting_.push_back(message);
        break;
    case Manner::refuses:
        connection_.send(message.createErrorReply(refusal, QStringLiteral("no")));
        break;
    case Manner::talksNonsense:
        connection_.send(message.createReply(nonsense));
        break;
    }
    return true;
}

void FakeNotificationDaemon::roundTrip() const {
    if (connection_.isConnected())
        connection_.call(QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
}

void FakeNotificationDaemon::answerWaiting() {
    for (const QDBusMessage& message : std::exchange(waiting_, {}))
        answer(message);
}

void FakeNotificationDaemon::answer(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    if (message.member() == QLatin1String("GetServerInformation")) {
        connection_.send(
            message.createReply({serverName, QStringLiteral("tests"), QStringLiteral("1"), QStringLiteral("1.2")}));
    } else if (message.member() == QLatin1String("GetCapabilities")) {
        connection_.send(message.createReply(capabilities));
    } else if (message.member() == QLatin1String("Notify")) {
        notify(message);
    } else if (message.member() == QLatin1String("CloseNotification")) {
        const uint id = arguments.value(0).toUInt();
        closed.append(id);
        if (shown.remove(id))
            tell(QStringLiteral("NotificationClosed"), {id, 3U});
    } else if (message.member() == QLatin1String("Get")) {
        const QString name = arguments.value(0).toString() + QLatin1Char('.') + arguments.value(1).toString();
        if (properties.contains(name))
            connection_.send(message.createReply(QVariant::fromValue(QDBusVariant(properties.value(name)))));
        else
            connection_.send(message.createErrorReply(QDBusError::UnknownProperty, QStringLiteral("no")));
    } else {
        connection_.send(message.createErrorReply(QDBusError::UnknownMethod, QStringLiteral("no")));
    }
}

void FakeNotificationDaemon::notify(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    const uint replaced = arguments.value(1).toUInt();
    Sent one{.appName = arguments.value(0).toString(),
             .replaced = replaced,
             .icon = arguments.value(2).toString(),
             .summary = arguments.value(3).toString(),
             .body = arguments.value(4).toString(),
             .actions = arguments.value(5).toStringList(),
             .hints = qdbus_cast<QVariantMap>(arguments.value(6)),
             .timeout = arguments.value(7).toInt()};
    if (replaced != 0 && forgetsIds) {
        sent.push_back(one);
        connection_.send(message.createErrorReply(QStringLiteral("test.NoSuchId"), QStringLiteral("no")));
        return;
    }
    one.id = replaced != 0 ? replaced : nextId++;
    shown.insert(one.id);
    sent.push_back(one);
    connection_.send(message.createReply(one.id));
}

void FakeNotificationDaemon::closeByUser(uint id, uint reason) {
    shown.remove(id);
    tell(QStringLiteral("NotificationClosed"), {id, reason});
}

void FakeNotificationDaemon::invoke(uint id, const QString& key) {
    tell(QStringLiteral("ActionInvoked"), {id, key});
}

void FakeNotificationDaemon::tell(const QString& signal, const QVariantList& arguments) {
    auto message = QDBusMessage::createSignal(path, service, signal);
    message.setArguments(arguments);
    connection_.send(message);
}
