// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QWidget>

/// Ends the program, which then has failed.
[[noreturn]] void fail(const char* why, const QString& file);

/// Writes a picture of the widget. It fails when there is nothing to see in it: text and lines have more than a few
/// colours, and no less than 3 % and no more than `mostDrawn` of it are of another colour than the background.
void keep(QWidget& widget, const QString& file, double mostDrawn);
