// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

struct udev;
struct udev_monitor;

/// Follows the udev events of the power-supply class, except those of peripherals.
class UdevMonitor {
public:
    /// `event` is told whether all events since it was last called came from batteries. Null when udev is
    /// not available.
    static std::unique_ptr<UdevMonitor> start(std::function<void(bool isOfBatteries)> event);
    ~UdevMonitor();
    UdevMonitor(const UdevMonitor&) = delete;
    UdevMonitor& operator=(const UdevMonitor&) = delete;

private:
    UdevMonitor(udev* context, udev_monitor* monitor, std::function<void(bool isOfBatteries)> event);
    void drain();

    udev* context_;
    udev_monitor* monitor_;
    std::function<void(bool isOfBatteries)> event_;
    std::unique_ptr<QSocketNotifier> notifier_;
};
