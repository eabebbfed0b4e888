// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The names of a power-profiles service, and those of python-dbusmock, which stands in for it.
inline const QString oldName = QStringLiteral("net.hadess.PowerProfiles");
inline const QString oldPath = QStringLiteral("/net/hadess/PowerProfiles");
inline const QString newName = QStringLiteral("org.freedesktop.UPower.PowerProfiles");
inline const QString newPath = QStringLiteral("/org/freedesktop/UPower/PowerProfiles");
inline const QString mock = QStringLiteral("org.freedesktop.DBus.Mock");
