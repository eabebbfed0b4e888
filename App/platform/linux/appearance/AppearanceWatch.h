// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/appearance/PortalSettings.h"
#include "platform/linux/appearance/XfconfSettings.h"

#include <functional>

/// How the desktop's windows look, from those that tell it on the session bus, and every change of it.
class AppearanceWatch final {
public:
    /// `changed` is told each look that differs from the one before; the first differs from an empty one.
    AppearanceWatch(const QDBusConnection& bus, std::function<void(const Appearance&)> changed);

    /// Asks the settings portal, and on Xfce that desktop's own service too; without waiting for an answer.
    void start(bool isXfce);

private:
    std::function<void(const Appearance&)> changed_;
    Appearance look_;
    PortalSettings portal_;
    XfconfSettings xfce_;

    void update();
};
