// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/appearance/KdeSettings.h"
#include "platform/linux/appearance/PortalSettings.h"
#include "platform/linux/appearance/XfconfSettings.h"

#include <filesystem>
#include <functional>

/// Follows the appearance of the desktop's windows through the services that report it on the session bus.
class AppearanceWatch final {
public:
    /// `changed` is called with each appearance that differs from the one before; the first is compared with an empty
    /// one.
    AppearanceWatch(const QDBusConnection& bus, std::function<void(const Appearance&)> changed);

    /// Asks the settings portal, and on Xfce that desktop's own service too, without waiting for an answer.
    void start(bool isXfce);

    /// On Plasma: follows changes of the colours, which are in this file.
    void startOnKde(Files& files, std::filesystem::path kdeglobals);

private:
    std::function<void(const Appearance&)> changed_;
    Appearance appearance_;
    PortalSettings portal_;
    XfconfSettings xfce_;
    KdeSettings kde_;

    void update();
};
