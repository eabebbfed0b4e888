// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

/// A glyph that can be seen on a panel of any colour: light, with a dark outline of so many pixels. Whatever the
/// panel's colour is, one of the two tones is at least 3.8 to 1 against it (WCAG 2, contrast ratio), and between them
/// it is 14 to 1. Of `glyph` only the opacity counts. ARGB32.
QImage twoTone(const QImage& glyph, int outline, const QRect& solid);
