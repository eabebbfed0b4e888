// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QString>

/// What launchers tell an application about the desktop, signature a{sv}: the one entry that counts here, if it is
/// among the first `mostInMessage`.
struct PlatformData {
    QString activationToken; ///< empty without one
};
Q_DECLARE_METATYPE(PlatformData)

QDBusArgument& operator<<(QDBusArgument& argument, const PlatformData& data);
const QDBusArgument& operator>>(const QDBusArgument& argument, PlatformData& data);
