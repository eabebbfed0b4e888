// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/AppearanceWatch.h"

#include <utility>

AppearanceWatch::AppearanceWatch(const QDBusConnection& bus, std::function<void(const Appearance&)> changed)
    : changed_(std::move(changed))
    , portal_(bus, [this] { update(); })
    , xfce_(bus, [this] { update(); })
    , kde_(bus, [this] { update(); }) {}

void AppearanceWatch::start(bool isXfce) {
    portal_.start();
    if (isXfce)
        xfce_.start();
}

void AppearanceWatch::startOnKde(Files& files, std::filesystem::path kdeglobals) {
    kde_.start(files, std::move(kdeglobals));
}

void AppearanceWatch::update() {
    Appearance appearance = appearanceOf(portal_.settings(), xfce_.settings());
    appearance.colours = kde_.colours();
    if (std::exchange(appearance_, appearance) != appearance)
        changed_(appearance);
}
