// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

/// The program on the session bus (org.freedesktop.Application): one instance a session, which later starts wake.
class SessionApplication final : public QObject {
    Q_OBJECT

public:
    explicit SessionApplication(QDBusConnection bus);

    /// Takes the program's name on the bus; false when another instance has it, or the bus refuses it.
    bool claim();

    /// Asks the instance that has the name to show itself, and waits for its answer; false when there is none.
    bool activateOther();

    // What others call; the names are those of the interface.
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& actionName, const QVariantList& parameter, const QVariantMap& platformData);

Q_SIGNALS:
    /// The program was started again: it is to show itself.
    void activated();

private:
    QDBusConnection bus_;
};
