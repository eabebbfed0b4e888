// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QString>

class QWidget;

/// Ends the program with a failure when a text or a control of the popover is cut off, overlaps another, leaves the
/// padding or the column's two edges, or has not the size that it is to have; when label and value are not on one
/// baseline; or when a text cannot be read in the picture. `content` is inside the popover.
void checkPopover(const QWidget& popover, const QWidget& content, const QImage& picture, const QString& file);

/// The same for the settings' form inside its window; of the form, what is scrolled into view is looked at.
void checkSettings(const QWidget& window, const QWidget& form, const QImage& picture, const QString& file);
