// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <QLocale>
#include <QString>

/// The local time of day in hours and minutes, in the locale's format: "14:05", "2:05 PM".
QString shortTime(Date date, const QLocale& locale = QLocale::system());

/// The locale's format for such times, in Qt's notation.
QString shortTimeFormat(const QLocale& locale);

/// The local day in the locale's language, with its weekday and number: "Mon 3".
QString dayText(Date date, const QLocale& locale = QLocale::system());

/// The local weekday, abbreviated: "Mon".
QString weekdayText(Date date, const QLocale& locale = QLocale::system());
