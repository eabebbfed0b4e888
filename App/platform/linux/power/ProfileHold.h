// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LowPowerSwitch.h"
#include "platform/Observers.h"
#include "platform/Subscription.h"
#include "platform/linux/power/ProfileProperty.h"

#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>
#include <map>
#include <optional>

class SystemBus;

/// Holds the profile "power-saver" of a power-profiles service on the system bus: power-profiles-daemon, or another one
/// with its interface, under the new name or the old one. The service lets go of the hold when the user chooses a
/// profile, and when we leave the bus.
class ProfileHold final : public QObject, public LowPowerSwitch {
    Q_OBJECT

public:
    explicit ProfileHold(SystemBus& bus);

    /// Starts to follow the service.
    void start();

    bool isOffered() const override { return !serviceToUse().isEmpty(); }
    bool isHeld() const override { return held_.has_value(); }
    void hold() override;
    void release() override;
    [[nodiscard]] Subscription onSwitchChanged(std::function<void()> callback) override {
        return observers_.add(std::move(callback));
    }

private Q_SLOTS:
    void profileReleased(uint cookie);

private:
    /// A service that is on the bus.
    struct Service {
        bool offers = false;  ///< it can save power
        bool refused = false; ///< it did not let us
    };
    struct Hold {
        QString name; ///< of the service
        uint cookie = 0;
    };

    SystemBus& bus_;
    ProfileProperty profiles_;
    std::map<QString, Service> services_;
    std::map<QString, int> lives_; ///< of a service, so far; answers to what was asked of an earlier one do not count
    std::optional<Hold> held_;
    QString asked_; ///< for the hold; empty if none is
    bool isWanted_ = false;
    Observers<> observers_;
    Subscription connections_;

    void hearReleases();
    void forget(const QString& name);
    void take(const QString& name, const QVariant& profiles);
    void letGo(const Hold& hold);
    QString serviceToUse() const;
};
