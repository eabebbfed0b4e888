// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Subscription.h"
#include "platform/linux/power/PowerProfileChoice.h"

#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <vector>

class SystemBus;

/// Follows one property of the power-profiles services on the system bus: of power-profiles-daemon, or of another one
/// with its interface, under the new name and the old one. None is started for it.
class ProfileProperty final : public QObject {
    Q_OBJECT

public:
    /// The bus names of such a service, which are those of its interface too; the more recent one first.
    static constexpr std::array names{PowerProfileChoice::newName, PowerProfileChoice::oldName};

    /// The object path that belongs to a bus name: the same words.
    static QString pathOf(const QString& name);

    /// Called with one of the names, and what its owner says, which may be of any type.
    using Told = std::function<void(const QString& name, const QVariant& value)>;
    /// Called when the owner of one of the names has gone, perhaps only to be started again.
    using Left = std::function<void(const QString& name)>;

    ProfileProperty(SystemBus& bus, QString property, Told told, Left left);

    /// Starts to follow.
    void start();

private Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList& invalidated);

private:
    SystemBus& bus_;
    QString property_;
    Told told_;
    Left left_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    std::map<QString, int> departures_; ///< by name, so far
    std::vector<Subscription> subscriptions_;

    void follow();
    void ask(const QString& name, int triesLeft);
    void leave(const QString& name);
};
