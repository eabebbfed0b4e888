// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/Screens.h"

#include <QGuiApplication>
#include <QScreen>

std::vector<ScreenArea> allScreens() {
    std::vector<ScreenArea> areas;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect whole = screen->geometry();
        areas.push_back(
            {.whole = {whole.x(), whole.y(), whole.width(), whole.height()}, .scale = screen->devicePixelRatio()});
    }
    return areas;
}
