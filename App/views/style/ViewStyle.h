// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/text/Tint.h"

#include <QColor>
#include <QFont>
#include <QPalette>

class QPainter;
class QRectF;

/// The radius of a control's corners, in pixels.
inline constexpr double controlRadius = 8;

/// The width of the popover's content, and the padding within it on each side, in pixels.
inline constexpr int popoverWidth = 340;
inline constexpr int popoverPadding = 16;

/// The text styles of the views, all derived from the desktop's font.
enum class TextStyle { body, headline, callout, caption, caption2 };

/// The desktop's current font in the size and weight of a style.
QFont textFont(TextStyle style);

/// The least width in which a text takes no more lines than in `room`: so wrapped, its lines are about equally long,
/// and no word is left alone. A little more if a line would end with a word of one letter otherwise. `room` itself if
/// the text takes one line.
int balancedWidth(const QString& text, const QFont& font, int room);

/// The direction of a text of ours on its own widget, which QPainter would take from the desktop's: our texts are
/// English, and "24 hours" would become "hours 24".
inline constexpr Qt::LayoutDirection textDirection = Qt::LeftToRight;

/// What a colour is for. The Web Content Accessibility Guidelines require a contrast of at least 4.5 : 1 for text, and
/// 3 : 1 for anything else; on a palette of pure black and white, which is the desktops' high contrast, 7 : 1 and
/// 4.5 : 1.
enum class Use { text, graphics };

/// A colour of the views, with enough contrast to the window colour of the palette for its use. The accent colour is
/// the palette's selection colour.
QColor tintColor(Tint tint, const QPalette& palette, Use use = Use::text);

/// The same, but with enough contrast to another background.
QColor tintColorOn(const QColor& background, Tint tint, const QPalette& palette, Use use = Use::text);

/// The grey of what is a control's shape: the edge of what is chosen, a switch that is off. It can be told from the
/// background, which is the window's colour or close to it.
QColor shapeColorOn(const QColor& background, const QPalette& palette);

/// What remains of a bar behind the filled part: secondary at 0.2, as the ring's.
QColor trackColor(const QPalette& palette);

/// The colour of a card: the popover, and the groups of the settings. The lighter of the palette's own two backgrounds.
QColor cardColor(const QPalette& palette);

/// How far the shadow of a card that floats over the desktop reaches beyond it, in pixels; and the radius of its
/// corners.
inline constexpr int cardShadow = 20;
inline constexpr double cardRadius = 12;

/// Draws such a card with its shadow.
void drawFloatingCard(QPainter& painter, const QRectF& card, const QPalette& palette);

/// The hairlines between rows, and around a card.
QColor hairlineColor(const QPalette& palette);

/// Draws an outline, one device pixel thick at every scale, just inside a card or a group, filled with the painter's
/// brush. Where there is one, the colour must be opaque.
void drawOutline(QPainter& painter, const QRectF& shape, double radius, const QColor& color);

/// Draws a hairline across, of the same thickness.
void drawHairline(QPainter& painter, double left, double right, double y, const QPalette& palette);

/// The rectangle with its sides between device pixels, so that none of them is blurred.
QRectF onDevicePixels(const QPainter& painter, const QRectF& place);

/// Whether everything is to stand out: the desktop's high contrast.
bool hasHighContrast(const QPalette& palette);

/// How a control is filled: as it is, below the pointer, pressed.
enum class Filling { rest, hover, pressed };

/// The colour of such a filling on a card.
QColor fillColor(const QPalette& palette, Filling filling);

/// Fills a control's place, with round corners; with a ring around it at the keyboard, and with an edge where
/// everything is to stand out.
void drawFilling(QPainter& painter, const QRectF& place, const QPalette& palette, Filling filling, bool hasRing);

/// `share` of one colour, from 0 to 1, over the other.
QColor mixed(const QColor& one, const QColor& other, double share);

/// The contrast of two colours by those guidelines, from 1 to 21.
double contrast(const QColor& one, const QColor& other);
