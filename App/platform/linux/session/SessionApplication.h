// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/session/PlatformData.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantList>

/// The program on the session bus (org.freedesktop.Application): one instance per session, which later starts activate.
class SessionApplication final : public QObject {
    Q_OBJECT

public:
    explicit SessionApplication(QDBusConnection bus);

    /// Takes the program's name on the bus; false if another instance has it or the bus refuses it.
    bool claim();

    /// Gives the name back, without waiting for the bus: this instance is ending, and the next one may start.
    void release();

    /// Asks the instance that has the name to show itself, and waits for its answer; false if there is no such
    /// instance.
    bool activateOther();

    // What other programs call; the interface gives the names.
    void Activate(const PlatformData& platformData);
    void Open(const QStringList& uris, const PlatformData& platformData);
    void ActivateAction(const QString& actionName, const QVariantList& parameter, const PlatformData& platformData);

Q_SIGNALS:
    /// The program was started again: it is to show itself.
    void activated();

private:
    QDBusConnection bus_;
};
