// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/XfconfSettings.h"

#include "platform/linux/bus/DBusCall.h"
#include "platform/linux/bus/MessageLimits.h"
#include "platform/qt/Text.h"

#include <QDBusArgument>
#include <QDBusVariant>

#include <utility>

namespace {

const QString service = QStringLiteral("org.xfce.Xfconf");
const QString path = QStringLiteral("/org/xfce/Xfconf");
const QString interface = QStringLiteral("org.xfce.Xfconf");
const QString channel = QStringLiteral("xsettings");

} // namespace

XfconfSettings::XfconfSettings(QDBusConnection bus, std::function<void()> changed)
    : bus_(std::move(bus))
    , changed_(std::move(changed)) {}

void XfconfSettings::start() {
    watcher_.setConnection(bus_);
    watcher_.setWatchMode(QDBusServiceWatcher::WatchForRegistration);
    watcher_.addWatchedService(service);
    connect(&watcher_, &QDBusServiceWatcher::serviceRegistered, this, &XfconfSettings::ask);
    bus_.connect(service, path, interface, QStringLiteral("PropertyChanged"), this,
                 SLOT(propertyChanged(QDBusMessage)));
    bus_.connect(service, path, interface, QStringLiteral("PropertyRemoved"), this,
                 SLOT(propertyRemoved(QDBusMessage)));
    ask();
}

void XfconfSettings::ask() {
    auto message = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("GetAllProperties"));
    message << channel << QStringLiteral("/");
    message.setAutoStartService(false);
    callAsync(bus_, message, this, [this](const QDBusPendingCall& call) { take(call.reply()); });
}

void XfconfSettings::take(const QDBusMessage& answer) {
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("a{sv}"))
        return;
    settings_ = {};
    const auto properties = answer.arguments().at(0).value<QDBusArgument>();
    readMap(properties, mostSettings, [this](const QString& property, const QDBusArgument& setting) {
        QDBusVariant value;
        setting >> value;
        set(property, value.variant());
    });
    changed_();
}

void XfconfSettings::propertyChanged(const QDBusMessage& signal) {
    const QVariantList arguments = signal.arguments();
    if (signal.signature() != QLatin1String("ssv") || arguments.at(0) != channel)
        return;
    set(arguments.at(1).toString(), arguments.at(2).value<QDBusVariant>().variant());
    changed_();
}

void XfconfSettings::propertyRemoved(const QDBusMessage& signal) {
    const QVariantList arguments = signal.arguments();
    if (signal.signature() != QLatin1String("ss") || arguments.at(0) != channel)
        return;
    set(arguments.at(1).toString(), {});
    changed_();
}

void XfconfSettings::set(const QString& property, const QVariant& value) {
    if (property == QLatin1String("/Net/ThemeName"))
        settings_.themeName = asText(value);
    else if (property == QLatin1String("/Gtk/FontName"))
        settings_.fontName = asText(value);
}
