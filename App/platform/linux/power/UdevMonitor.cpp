// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/UdevMonitor.h"

#include "platform/linux/power/PowerSupply.h"

#include <libudev.h>

#include <cerrno>
#include <utility>

namespace {

/// What the event tells of the supply, or else its attributes.
PowerSupply supplyOf(udev_device* device) {
    PowerSupply supply;
    const auto take = [&](const char* property, const char* attribute) {
        const char* text = udev_device_get_property_value(device, property);
        if (text == nullptr)
            text = udev_device_get_sysattr_value(device, attribute);
        if (text != nullptr)
            supply.attributes.emplace(attribute, text);
    };
    take("POWER_SUPPLY_SCOPE", "scope");
    take("POWER_SUPPLY_TYPE", "type");
    return supply;
}

} // namespace

std::unique_ptr<UdevMonitor> UdevMonitor::start(std::function<void(bool isOfBatteries)> event) {
    udev* context = udev_new();
    udev_monitor* monitor = context != nullptr ? udev_monitor_new_from_netlink(context, "udev") : nullptr;
    if (monitor != nullptr && udev_monitor_filter_add_match_subsystem_devtype(monitor, "power_supply", nullptr) >= 0 &&
        udev_monitor_enable_receiving(monitor) >= 0)
        return std::unique_ptr<UdevMonitor>(new UdevMonitor(context, monitor, std::move(event)));
    udev_monitor_unref(monitor);
    udev_unref(context);
    return nullptr;
}

UdevMonitor::UdevMonitor(udev* context, udev_monitor* monitor, std::function<void(bool isOfBatteries)> event)
    : context_(context)
    , monitor_(monitor)
    , event_(std::move(event))
    , notifier_(std::make_unique<QSocketNotifier>(udev_monitor_get_fd(monitor), QSocketNotifier::Read)) {
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { drain(); });
}

UdevMonitor::~UdevMonitor() {
    notifier_.reset();
    udev_monitor_unref(monitor_);
    udev_unref(context_);
}

void UdevMonitor::drain() {
    bool any = false;
    bool isOfBatteries = true;
    errno = 0;
    while (udev_device* device = udev_monitor_receive_device(monitor_)) {
        if (const PowerSupply supply = supplyOf(device); !supply.isPeripheral()) {
            any = true;
            isOfBatteries = isOfBatteries && supply.isSystemBattery();
        }
        udev_device_unref(device);
        errno = 0;
    }
    // Events that did not fit into the socket's buffer are lost, and any of them may have concerned us.
    const bool isAnyLost = errno == ENOBUFS;
    if (any || isAnyLost)
        event_(isOfBatteries && !isAnyLost);
}
