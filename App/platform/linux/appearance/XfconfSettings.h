// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/appearance/AppearanceSettings.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariant>

#include <functional>

/// How Xfce's windows look, from its settings service on the session bus (org.xfce.Xfconf), and every change of it.
/// Where that is not running it says nothing and is not started; one that comes later is heard too.
class XfconfSettings final : public QObject {
    Q_OBJECT

public:
    /// `changed` is told that `settings` may be others.
    XfconfSettings(QDBusConnection bus, std::function<void()> changed);

    /// Asks, without waiting for the answer, and follows from then on.
    void start();

    /// As they are known now.
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
