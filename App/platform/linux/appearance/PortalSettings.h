// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/appearance/AppearanceSettings.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariant>

#include <functional>

/// How the desktop's windows look, from the settings portal on the session bus (org.freedesktop.portal.Settings), and
/// every change of it. Where there is no portal it says nothing; one that comes later is heard too. None is started
/// for it: a desktop whose looks can be chosen has its portal running.
class PortalSettings final : public QObject {
    Q_OBJECT

public:
    /// `changed` is told that `settings` may be others.
    PortalSettings(QDBusConnection bus, std::function<void()> changed);

    /// Asks, without waiting for the answer, and follows from then on.
    void start();

    /// As they are known now.
    const DesktopSettings& settings() const { return settings_; }

private Q_SLOTS:
    void settingChanged(const QDBusMessage& signal);

private:
    QDBusConnection bus_;
    QDBusServiceWatcher watcher_;
    std::function<void()> changed_;
    DesktopSettings settings_;

    void ask();
    void take(const QDBusMessage& answer);
    void set(const QString& space, const QString& key, const QVariant& value);
};
