// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TimeText.h"

#include <QDateTime>

#include <cmath>

QString shortTime(Date date, const QLocale& locale) {
    const double milliseconds = std::floor(date.time_since_epoch().count() * 1000);
    // Years that no clock shows are beyond what the toolkit counts in.
    if (!(std::abs(milliseconds) < 1e15))
        return {};
    const QTime time = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(milliseconds)).time();
    // Some locales, the one of programmers among them, have seconds in their shortest format.
    QString format = locale.timeFormat(QLocale::ShortFormat);
    format.remove(QLatin1String(":ss")).remove(QLatin1String(".ss"));
    return locale.toString(time, format);
}
