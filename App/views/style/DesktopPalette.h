// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Appearance.h"

#include <QFont>
#include <QPalette>

/// Qt's own palette, which is light, adapted to the desktop: dark if the desktop says so, black and white if it wants
/// high contrast, and with the desktop's accent as the selection colour.
QPalette desktopPalette(const QPalette& own, const Appearance& appearance);

/// Qt's own font, with the desktop's family and size where it gives them.
QFont desktopFont(const QFont& own, const Appearance& appearance);
