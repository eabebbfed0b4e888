// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/Screens.h"

#include <QGuiApplication>
#include <QScreen>

std::vector<ScreenArea> allScreens() {
    std::vector<ScreenArea> areas;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect whole = screen->geometry();
        areas.push_back({.x = whole.x(),
                         .y = whole.y(),
                         .width = whole.width(),
                         .height = whole.height(),
                         .scale = screen->devicePixelRatio()});
    }
    return areas;
}
