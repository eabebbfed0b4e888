// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Appearance.h"

#include <QFont>
#include <QPalette>

/// Qt's own palette, which is a light one, as the desktop wants it: dark where it says so, and with its accent
/// as the colour of what is chosen.
QPalette desktopPalette(const QPalette& own, const Appearance& look);

/// Qt's own font, with the desktop's family and size where it tells them.
QFont desktopFont(const QFont& own, const Appearance& look);
