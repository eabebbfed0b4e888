// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QString>

/// How many ids, events or properties a message may name. Panels and launchers name a handful, but anybody on the bus
/// can send millions.
inline constexpr int mostInMessage = 64;

/// How many settings an answer may hold. Desktops have some hundred; whoever takes the name of a service that is not
/// running can send millions.
inline constexpr int mostSettings = 1024;

/// Reads a map up to that many entries, and no more: gives `take` each key, and the argument standing at the value,
/// which may be left unread.
template <class Take>
void readMap(const QDBusArgument& argument, int most, Take take) {
    argument.beginMap();
    for (int count = 0; count < most && !argument.atEnd(); ++count) {
        argument.beginMapEntry();
        QString key;
        argument >> key;
        take(key, argument);
        argument.endMapEntry();
    }
    argument.endMap();
}
