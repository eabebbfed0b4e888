// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/PortalSettings.h"

#include "platform/linux/bus/DBusCall.h"
#include "platform/linux/bus/MessageLimits.h"
#include "platform/qt/Text.h"

#include <QDBusArgument>
#include <QDBusVariant>

#include <utility>

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");

template <class T, int type>
std::optional<T> as(const QVariant& value) {
    return value.typeId() == type ? std::optional<T>(value.value<T>()) : std::nullopt;
}

std::optional<std::array<double, 3>> asColor(const QVariant& value) {
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("(ddd)"))
        return std::nullopt;
    std::array<double, 3> color{};
    argument.beginStructure();
    argument >> color[0] >> color[1] >> color[2];
    argument.endStructure();
    return color;
}

} // namespace

PortalSettings::PortalSettings(QDBusConnection bus, std::function<void()> changed)
    : bus_(std::move(bus))
    , changed_(std::move(changed)) {}

void PortalSettings::start() {
    watcher_.setConnection(bus_);
    watcher_.setWatchMode(QDBusServiceWatcher::WatchForRegistration);
    watcher_.addWatchedService(service);
    connect(&watcher_, &QDBusServiceWatcher::serviceRegistered, this, &PortalSettings::ask);
    bus_.connect(service, path, interface, QStringLiteral("SettingChanged"), this, SLOT(settingChanged(QDBusMessage)));
    ask();
}

void PortalSettings::ask() {
    auto message = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("ReadAll"));
    message << QStringList{appearance, gnome};
    message.setAutoStartService(false);
    callAsync(bus_, message, this, [this](const QDBusPendingCall& call) { take(call.reply()); });
}

void PortalSettings::take(const QDBusMessage& answer) {
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("a{sa{sv}}"))
        return;
    settings_ = {};
    const auto spaces = answer.arguments().at(0).value<QDBusArgument>();
    readMap(spaces, mostInMessage, [this](const QString& space, const QDBusArgument& settings) {
        readMap(settings, mostSettings, [&](const QString& key, const QDBusArgument& setting) {
            QDBusVariant value;
            setting >> value;
            set(space, key, value.variant());
        });
    });
    changed_();
}

void PortalSettings::settingChanged(const QDBusMessage& signal) {
    if (signal.signature() != QLatin1String("ssv"))
        return;
    const QVariantList arguments = signal.arguments();
    set(arguments.at(0).toString(), arguments.at(1).toString(), arguments.at(2).value<QDBusVariant>().variant());
    changed_();
}

void PortalSettings::set(const QString& space, const QString& key, const QVariant& value) {
    if (space == appearance && key == QLatin1String("color-scheme"))
        settings_.colorScheme = as<std::uint32_t, QMetaType::UInt>(value);
    else if (space == appearance && key == QLatin1String("contrast"))
        settings_.contrast = as<std::uint32_t, QMetaType::UInt>(value);
    else if (space == appearance && key == QLatin1String("accent-color"))
        settings_.accentColor = asColor(value);
    else if (space == gnome && key == QLatin1String("font-name"))
        settings_.fontName = asText(value);
    else if (space == gnome && key == QLatin1String("text-scaling-factor"))
        settings_.textScale = as<double, QMetaType::Double>(value);
    else if (space == gnome && key == QLatin1String("gtk-theme"))
        settings_.themeName = asText(value);
}
