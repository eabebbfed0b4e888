// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/appearance/AppearanceSettings.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariant>

#include <functional>

/// Follows the appearance of Xfce's windows through its settings service on the session bus (org.xfce.Xfconf). If that
/// is not running, it is not started and the settings stay empty; one that appears later is noticed.
class XfconfSettings final : public QObject {
    Q_OBJECT

public:
    /// `changed` is called when `settings` may have changed.
    XfconfSettings(QDBusConnection bus, std::function<void()> changed);

    /// Asks for the settings without waiting for the answer, and follows their changes from then on.
    void start();

    /// The settings as known now.
    const XfceSettings& settings() const { return settings_; }

private Q_SLOTS:
    void propertyChanged(const QDBusMessage& signal);
    void propertyRemoved(const QDBusMessage& signal);

private:
    QDBusConnection bus_;
    QDBusServiceWatcher watcher_;
    std::function<void()> changed_;
    XfceSettings settings_;

    void ask();
    void take(const QDBusMessage& answer);
    void set(const QString& property, const QVariant& value);
};
