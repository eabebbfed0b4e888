// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>

class QScreen;

/// What panels leave free of a screen, in Qt's coordinates. With one screen Qt knows it. Several share one work area
/// (Extended Window Manager Hints, _NET_WORKAREA), and for those Qt reports the whole screen.
QRect x11FreeArea(const QScreen& screen);
