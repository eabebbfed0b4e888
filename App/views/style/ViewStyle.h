// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/text/Tint.h"

#include <QColor>
#include <QFont>
#include <QPalette>

#include <functional>

/// How wide the popover's content is, and how much of that is left free on each side.
inline constexpr int popoverWidth = 340;
inline constexpr int popoverPadding = 16;

/// The fonts of the views, all from the desktop's own.
enum class TextStyle { body, headline, callout, caption, caption2 };

/// The desktop's font, as it is now, in the size and weight of a style.
QFont textFont(TextStyle style);

/// How wide a digit is in a font.
using DigitWidth = std::function<double(const QFont& font, char digit)>;

/// The same as Qt draws it, in pixels.
double digitWidth(const QFont& font, char digit);

/// The font if its digits are all as wide, so that numbers stay where they are while they change; else one that has
/// such digits, in the same size. Fonts that have both kinds cannot be told to use the other one, before Qt 6.7.
QFont tabularFont(const QFont& font, const DigitWidth& width = digitWidth);

/// What a colour is for. By the Web Content Accessibility Guidelines text needs a contrast of 4.5 : 1 at least, and
/// what is no text 3 : 1.
enum class Use { text, graphics };

/// The colours of the views, with enough contrast to the window colour of the palette for their use. The accent colour
/// is that of what is selected.
QColor tintColor(Tint tint, const QPalette& palette, Use use = Use::text);

/// The contrast of two colours by those guidelines, from 1 to 21.
double contrast(const QColor& one, const QColor& other);
