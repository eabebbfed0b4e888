// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

/// A glyph that is visible on a panel of any colour: light, with a dark outline of `outline` pixels. Whatever the
/// panel's colour is, one of the two tones has a contrast of at least 3.5 to 1 to it (WCAG 2, contrast ratio), and
/// between them it is 12 to 1. Only the opacity of `glyph` matters. ARGB32.
QImage twoTone(const QImage& glyph, int outline, const QRect& solid);
