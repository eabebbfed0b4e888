// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/session/ApplicationId.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <functional>

/// The program on the session bus (org.freedesktop.Application): one instance a session, which later starts wake.
class SessionApplication final : public QObject {
    Q_OBJECT

public:
    static constexpr const char* name = applicationId;

    explicit SessionApplication(QDBusConnection bus);

    /// What a later start of the program does in this one; until it is set, nothing.
    void setActivated(std::function<void()> activated) { activated_ = std::move(activated); }

    /// Takes the program's name on the bus; false when another instance has it, or the bus refuses it.
    bool claim();

    /// Asks the instance that has the name to show itself, and waits for its answer; false when there is none.
    bool activateOther();

    // What others call; the names are those of the interface.
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& actionName, const QVariantList& parameter, const QVariantMap& platformData);

private:
    QDBusConnection bus_;
    std::function<void()> activated_;
};
