// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>

class QScreen;

/// What panels leave free of a screen, in Qt's coordinates. Qt knows that if there is one screen on an X server:
/// several share one work area (Extended Window Manager Hints, _NET_WORKAREA), and then it takes each as a whole.
QRect x11FreeArea(const QScreen& screen);
