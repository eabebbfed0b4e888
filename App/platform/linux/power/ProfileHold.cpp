// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ProfileHold.h"

#include "platform/ApplicationId.h"
#include "platform/linux/bus/DBusCall.h"
#include "platform/linux/bus/SystemBus.h"
#include "platform/linux/power/ProfileOffer.h"
#include "platform/qt/Text.h"

#include <QDBusArgument>
#include <QDBusPendingReply>

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

namespace {

constexpr qsizetype mostProfiles = 64; ///< there are three

std::vector<OfferedProfile> profilesIn(const QVariant& value) {
    std::vector<OfferedProfile> profiles;
    if (value.typeId() != qMetaTypeId<QDBusArgument>())
        return profiles;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("aa{sv}"))
        return profiles;
    const auto entries = qdbus_cast<QList<QVariantMap>>(argument);
    for (const QVariantMap& entry : entries.first(std::min(entries.size(), mostProfiles))) {
        OfferedProfile profile;
        for (auto each = entry.begin(); each != entry.end(); ++each) {
            if (auto text = asText(each.value()))
                profile.emplace(each.key().toStdString(), std::move(*text));
        }
        profiles.push_back(std::move(profile));
    }
    return profiles;
}

} // namespace

ProfileHold::ProfileHold(SystemBus& bus)
    : bus_(bus)
    , profiles_(
          bus, QStringLiteral("Profiles"), [this](const QString& name, const QVariant& value) { take(name, value); },
          [this](const QString& name) { forget(name); }) {}

void ProfileHold::start() {
    connections_ = bus_.onConnected([this] { hearReleases(); });
    if (bus_.connection().isConnected())
        hearReleases();
    profiles_.start();
}

void ProfileHold::hearReleases() {
    for (const std::string_view one : ProfileProperty::names) {
        const QString name = toQString(one);
        bus_.connection().connect(name, ProfileProperty::pathOf(name), name, QStringLiteral("ProfileReleased"), {},
                                  QStringLiteral("u"), this, SLOT(profileReleased(uint)));
    }
}

void ProfileHold::forget(const QString& name) {
    ++lives_[name];
    services_.erase(name);
    if (asked_ == name)
        asked_.clear();
    if (held_ && held_->name == name)
        held_.reset();
    observers_.notify();
}

void ProfileHold::take(const QString& name, const QVariant& profiles) {
    services_[name].offers = offersPowerSaver(profilesIn(profiles));
    observers_.notify();
}

QString ProfileHold::serviceToUse() const {
    for (const std::string_view one : ProfileProperty::names) {
        // One daemon has both names: what it refuses under one it refuses under the other.
        if (const auto service = services_.find(toQString(one)); service != services_.end())
            return service->second.offers && !service->second.refused ? service->first : QString();
    }
    return {};
}

void ProfileHold::hold() {
    const QString name = serviceToUse();
    if (held_ || name.isEmpty())
        return;
    isWanted_ = true;
    if (!asked_.isEmpty())
        return;
    asked_ = name;
    auto message =
        QDBusMessage::createMethodCall(name, ProfileProperty::pathOf(name), name, QStringLiteral("HoldProfile"));
    message << QStringLiteral("power-saver") << QStringLiteral("Turned on in a reminder of a low battery")
            << QString::fromLatin1(applicationId);
    message.setAutoStartService(false);
    // Policy may ask the user first, and a hold that is granted late must not be forgotten.
    constexpr std::chrono::milliseconds forever(std::numeric_limits<int>::max());
    callAsync(
        bus_.connection(), message, this,
        [this, name, life = lives_[name]](const QDBusPendingReply<uint>& reply) {
            if (life != lives_[name]) {
                if (!reply.isError())
                    letGo({.name = name, .cookie = reply.value()});
                return;
            }
            asked_.clear();
            if (reply.isError())
                services_[name].refused = true;
            else if (isWanted_)
                held_ = {.name = name, .cookie = reply.value()};
            else
                letGo({.name = name, .cookie = reply.value()});
            observers_.notify();
        },
        forever);
}

void ProfileHold::release() {
    isWanted_ = false;
    if (!held_)
        return;
    letGo(*std::exchange(held_, std::nullopt));
    observers_.notify();
}

void ProfileHold::letGo(const Hold& hold) {
    auto message = QDBusMessage::createMethodCall(hold.name, ProfileProperty::pathOf(hold.name), hold.name,
                                                  QStringLiteral("ReleaseProfile"));
    message << hold.cookie;
    message.setAutoStartService(false);
    bus_.connection().asyncCall(message); // an error means that the hold has ended already
}

void ProfileHold::profileReleased(uint cookie) {
    if (!held_ || held_->cookie != cookie)
        return;
    held_.reset();
    observers_.notify();
}
