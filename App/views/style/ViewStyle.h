// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/text/Tint.h"

#include <QColor>
#include <QFont>
#include <QPalette>

/// The width of the popover's content, and the padding within it on each side, in pixels.
inline constexpr int popoverWidth = 340;
inline constexpr int popoverPadding = 16;

/// The text styles of the views, all derived from the desktop's font.
enum class TextStyle { body, headline, callout, caption, caption2 };

/// The desktop's current font in the size and weight of a style.
QFont textFont(TextStyle style);

/// The least width in which a text takes no more lines than in `room`: so wrapped, its lines are about equally long,
/// and no word is left alone. `room` itself if the text takes one line.
int balancedWidth(const QString& text, const QFont& font, int room);

/// What a colour is for. The Web Content Accessibility Guidelines require a contrast of at least 4.5 : 1 for text, and
/// 3 : 1 for anything else.
enum class Use { text, graphics };

/// A colour of the views, with enough contrast to the window colour of the palette for its use. The accent colour is
/// the palette's selection colour.
QColor tintColor(Tint tint, const QPalette& palette, Use use = Use::text);

/// The contrast of two colours by those guidelines, from 1 to 21.
double contrast(const QColor& one, const QColor& other);
