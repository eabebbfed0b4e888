// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/UdevMonitor.h"

#include "platform/linux/power/PowerSupply.h"

#include <libudev.h>

#include <cerrno>
#include <utility>

namespace {

bool concernsTheMachine(udev_device* device) {
    PowerSupply supply;
    const char* scope = udev_device_get_property_value(device, "POWER_SUPPLY_SCOPE");
    if (scope == nullptr)
        scope = udev_device_get_sysattr_value(device, "scope");
    if (scope != nullptr)
        supply.attributes.emplace("scope", scope);
    return !supply.isPeripheral();
}

} // namespace

std::unique_ptr<UdevMonitor> UdevMonitor::start(std::function<void()> event) {
    udev* context = udev_new();
    udev_monitor* monitor = context != nullptr ? udev_monitor_new_from_netlink(context, "udev") : nullptr;
    if (monitor != nullptr && udev_monitor_filter_add_match_subsystem_devtype(monitor, "power_supply", nullptr) >= 0 &&
        udev_monitor_enable_receiving(monitor) >= 0)
        return std::unique_ptr<UdevMonitor>(new UdevMonitor(context, monitor, std::move(event)));
    udev_monitor_unref(monitor);
    udev_unref(context);
    return nullptr;
}

UdevMonitor::UdevMonitor(udev* context, udev_monitor* monitor, std::function<void()> event)
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
    errno = 0;
    while (udev_device* device = udev_monitor_receive_device(monitor_)) {
        any = any || concernsTheMachine(device);
        udev_device_unref(device);
        errno = 0;
    }
    // Events that did not fit into the socket's buffer are lost, and any of them may have concerned us.
    if (any || errno == ENOBUFS)
        event_();
}
