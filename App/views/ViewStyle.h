// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/Tint.h"

#include <QColor>
#include <QFont>
#include <QPalette>

#include <optional>

/// How wide the popover's content is, and how much of that is left free on each side.
inline constexpr int popoverWidth = 340;
inline constexpr int popoverPadding = 16;

/// The fonts of the views, all from the desktop's own.
enum class TextStyle { body, headline, callout, caption, caption2 };

QFont textFont(TextStyle style);

/// The colours of the views on the window colour of a palette, so that text in them can be read on it: 4.5 : 1, the
/// least contrast for text by the Web Content Accessibility Guidelines. The accent colour is the desktop's where it
/// tells one, else that of selections.
QColor tintColor(Tint tint, const QPalette& palette, std::optional<QColor> accent = std::nullopt);

/// The contrast of two colours by those guidelines, from 1 to 21.
double contrast(const QColor& one, const QColor& other);
