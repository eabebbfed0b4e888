// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/appearance/AppearanceSettings.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariant>

#include <functional>

/// Follows the appearance of the desktop's windows through the settings portal on the session bus
/// (org.freedesktop.portal.Settings). Without a portal the settings stay empty; one that appears later is noticed. None
/// is started for this: a desktop with configurable looks has its portal running.
class PortalSettings final : public QObject {
    Q_OBJECT

public:
    /// `changed` is called when `settings` may have changed.
    PortalSettings(QDBusConnection bus, std::function<void()> changed);

    /// Asks for the settings without waiting for the answer, and follows their changes from then on.
    void start();

    /// The settings as known now.
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
