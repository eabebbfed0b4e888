// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/PlatformData.h"

#include "platform/linux/bus/MessageLimits.h"

#include <QDBusVariant>
#include <QVariantMap>

namespace {

constexpr QLatin1String tokenKey("activation-token");

} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const PlatformData& data) {
    return argument << QVariantMap{{tokenKey, data.activationToken}};
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PlatformData& data) {
    readMap(argument, mostInMessage, [&data](const QString& key, const QDBusArgument& entry) {
        if (key != tokenKey)
            return;
        QDBusVariant token;
        entry >> token;
        data.activationToken = token.variant().toString();
    });
    return argument;
}
