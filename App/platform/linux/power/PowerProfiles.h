// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observers.h"
#include "platform/PowerSaving.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/power/PowerProfileChoice.h"
#include "platform/linux/power/ProfileProperty.h"

#include <QObject>
#include <QSocketNotifier>

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

class SystemBus;

/// The power profile, as reported by power-profiles-daemon on the system bus, under its new name or its old one, else
/// by the firmware.
class PowerProfiles final : public QObject, public PowerSaving {
    Q_OBJECT

public:
    /// `sysfs` is the mount point of sysfs, "/sys". What a daemon reported counts for `keep` after it has gone, since
    /// it may only be restarting.
    PowerProfiles(SystemBus& bus, const std::filesystem::path& sysfs,
                  std::chrono::milliseconds keep = std::chrono::seconds(10));

    /// Starts to follow the daemon and the firmware.
    void start();

    bool isLowPowerModeEnabled() const override { return isLowPower_; }
    [[nodiscard]] Subscription onPowerStateChanged(std::function<void()> callback) override;

private:
    ProfileProperty daemons_;
    std::filesystem::path firmwareFile_;
    FileDescriptor firmware_;
    std::unique_ptr<QSocketNotifier> firmwareEvents_;
    PowerProfileChoice choice_;
    std::chrono::milliseconds keep_;
    std::map<std::string, int> absences_; ///< by name, so far
    bool isLowPower_ = false;
    Observers<> observers_;

    void take(const std::string& name, const std::string& profile);
    void forgetLater(const std::string& name);
    void readFirmware();
    void update();
};
