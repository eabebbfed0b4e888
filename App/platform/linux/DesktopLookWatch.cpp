// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DesktopLookWatch.h"

#include <utility>

DesktopLookWatch::DesktopLookWatch(const QDBusConnection& bus, std::function<void(const DesktopLook&)> changed)
    : changed_(std::move(changed))
    , portal_(bus, [this] { update(); })
    , xfce_(bus, [this] { update(); }) {}

void DesktopLookWatch::start(bool isXfce) {
    portal_.start();
    if (isXfce)
        xfce_.start();
}

void DesktopLookWatch::update() {
    const DesktopLook look = lookOf(portal_.settings(), xfce_.settings());
    if (std::exchange(look_, look) != look)
        changed_(look);
}
