// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/PowerProfiles.h"

#include "platform/linux/bus/DBusCall.h"
#include "platform/linux/bus/SystemBus.h"
#include "platform/linux/files/ReadDescriptor.h"
#include "platform/qt/Text.h"

#include <QDBusPendingReply>
#include <QDBusVariant>

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr std::array names{PowerProfileChoice::newName, PowerProfileChoice::oldName};
const char* const activeProfile = "ActiveProfile";

/// The object path that belongs to a bus name: the same words.
QString pathOf(const QString& name) {
    return QLatin1Char('/') + QString(name).replace(QLatin1Char('.'), QLatin1Char('/'));
}

} // namespace

PowerProfiles::PowerProfiles(SystemBus& bus, const std::filesystem::path& sysfs, std::chrono::milliseconds keep)
    : bus_(bus)
    , firmwareFile_(sysfs / "firmware/acpi/platform_profile")
    , keep_(keep) {}

void PowerProfiles::start() {
    subscriptions_.push_back(bus_.onConnected([this] { follow(); }));
    subscriptions_.push_back(bus_.onLost([this] {
        for (const std::string_view name : names)
            forgetLater(std::string(name));
    }));
    firmware_ = FileDescriptor(::open(firmwareFile_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (firmware_) {
        // sysfs signals changes as urgent data (POLLPRI).
        firmwareEvents_ = std::make_unique<QSocketNotifier>(firmware_.get(), QSocketNotifier::Exception);
        connect(firmwareEvents_.get(), &QSocketNotifier::activated, this, [this] { readFirmware(); });
        readFirmware();
    }
    if (bus_.connection().isConnected())
        follow();
}

Subscription PowerProfiles::onPowerStateChanged(std::function<void()> callback) {
    return observers_.add(std::move(callback));
}

void PowerProfiles::follow() {
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
            [this](const QString& name, const QString& /*before*/, const QString& now) {
                if (now.isEmpty())
                    forgetLater(name.toStdString());
                else
                    ask(name, answerTries);
            });
}

void PowerProfiles::ask(const QString& name, int triesLeft) {
    auto message = QDBusMessage::createMethodCall(name, pathOf(name), QStringLiteral("org.freedesktop.DBus.Properties"),
                                                  QStringLiteral("Get"));
    message << name << QString::fromLatin1(activeProfile);
    message.setAutoStartService(false);
    const int absences = absences_[name.toStdString()];
    callAsync(bus_.connection(), message, this, [=, this](const QDBusPendingReply<QDBusVariant>& reply) {
        if (absences != absences_[name.toStdString()]) // it has left meanwhile, and is asked again when it is back
            return;
        if (reply.isError()) {
            askAgain(this, reply.error(), triesLeft, [this, name, triesLeft] { ask(name, triesLeft - 1); });
            return;
        }
        if (const auto profile = asText(reply.value().variant()))
            take(name.toStdString(), *profile);
    });
}

void PowerProfiles::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                      const QStringList& invalidated) {
    // The interface becomes the bus name of the next call, and libdbus aborts if a text is not a valid name.
    if (std::ranges::find(names, interface.toStdString()) == names.end())
        return;
    if (const auto profile = asText(changed.value(QLatin1String(activeProfile))))
        take(interface.toStdString(), *profile);
    else if (invalidated.contains(QLatin1String(activeProfile)))
        ask(interface, answerTries);
}

void PowerProfiles::take(const std::string& name, const std::string& profile) {
    choice_.daemons[name] = {.profile = profile, .hasLeft = false};
    update();
}

void PowerProfiles::forgetLater(const std::string& name) {
    const int absence = ++absences_[name];
    const auto daemon = choice_.daemons.find(name);
    if (daemon == choice_.daemons.end())
        return;
    daemon->second.hasLeft = true;
    update();
    QTimer::singleShot(keep_, this, [this, name, absence] {
        const auto found = choice_.daemons.find(name);
        if (absence != absences_[name] || found == choice_.daemons.end() || !found->second.hasLeft)
            return;
        choice_.daemons.erase(found);
        update();
    });
}

void PowerProfiles::readFirmware() {
    const bool isThere = ::lseek(firmware_.get(), 0, SEEK_SET) == 0;
    choice_.firmware = isThere ? readDescriptor(firmware_.get(), 4096) : std::nullopt;
    // The file of a driver that has gone away signals for ever.
    if (!choice_.firmware)
        firmwareEvents_->setEnabled(false);
    update();
}

void PowerProfiles::update() {
    if (std::exchange(isLowPower_, choice_.isLowPower()) != isLowPower_)
        observers_.notify();
}
