// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ProfileProperty.h"

#include "platform/linux/bus/DBusCall.h"
#include "platform/linux/bus/SystemBus.h"
#include "platform/qt/Text.h"

#include <QDBusPendingReply>
#include <QDBusVariant>

#include <algorithm>
#include <utility>

QString ProfileProperty::pathOf(const QString& name) {
    return QLatin1Char('/') + QString(name).replace(QLatin1Char('.'), QLatin1Char('/'));
}

ProfileProperty::ProfileProperty(SystemBus& bus, QString property, Told told, Left left)
    : bus_(bus)
    , property_(std::move(property))
    , told_(std::move(told))
    , left_(std::move(left)) {}

void ProfileProperty::start() {
    subscriptions_.push_back(bus_.onConnected([this] { follow(); }));
    subscriptions_.push_back(bus_.onLost([this] {
        for (const std::string_view name : names)
            leave(toQString(name));
    }));
    if (bus_.connection().isConnected())
        follow();
}

void ProfileProperty::follow() {
    QDBusConnection connection = bus_.connection();
    watcher_ = std::make_unique<QDBusServiceWatcher>();
    watcher_->setConnection(connection);
    watcher_->setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    for (const std::string_view one : names) {
        const QString name = toQString(one);
        watcher_->addWatchedService(name);
        connection.connect(name, pathOf(name), QStringLiteral("org.freedesktop.DBus.Properties"),
                           QStringLiteral("PropertiesChanged"), {}, QStringLiteral("sa{sv}as"), this,
                           SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
        ask(name, answerTries);
    }
    connect(watcher_.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& name, const QString& before, const QString& now) {
                if (!before.isEmpty())
                    leave(name);
                if (!now.isEmpty())
                    ask(name, answerTries);
            });
}

void ProfileProperty::leave(const QString& name) {
    ++departures_[name];
    left_(name);
}

void ProfileProperty::ask(const QString& name, int triesLeft) {
    auto message = QDBusMessage::createMethodCall(name, pathOf(name), QStringLiteral("org.freedesktop.DBus.Properties"),
                                                  QStringLiteral("Get"));
    message << name << property_;
    message.setAutoStartService(false);
    const int departures = departures_[name];
    callAsync(bus_.connection(), message, this, [=, this](const QDBusPendingReply<QDBusVariant>& reply) {
        if (departures != departures_[name]) // it has left meanwhile, and is asked again when it is back
            return;
        if (reply.isError())
            askAgain(this, reply.error(), triesLeft, [this, name, triesLeft] { ask(name, triesLeft - 1); });
        else
            told_(name, reply.value().variant());
    });
}

void ProfileProperty::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                        const QStringList& invalidated) {
    // The interface becomes the bus name of the next call, and libdbus aborts if a text is not a valid name.
    if (std::ranges::find(names, interface.toStdString()) == names.end())
        return;
    if (changed.contains(property_))
        told_(interface, changed.value(property_));
    else if (invalidated.contains(property_))
        ask(interface, answerTries);
}
