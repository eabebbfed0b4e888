// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TimeText.h"

#include <QDateTime>

#include <cmath>

namespace {

QDateTime localTime(Date date) {
    const double milliseconds = std::floor(date.time_since_epoch().count() * 1000);
    // Years that no clock shows are beyond what the toolkit counts in.
    if (!(std::abs(milliseconds) < 1e15))
        return {};
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(milliseconds));
}

} // namespace

QString shortTime(Date date, const QLocale& locale) {
    // Some locales, the one of programmers among them, have seconds in their shortest format.
    QString format = locale.timeFormat(QLocale::ShortFormat);
    format.remove(QLatin1String(":ss")).remove(QLatin1String(".ss"));
    return locale.toString(localTime(date).time(), format);
}

QString dayText(Date date, const QLocale& locale) {
    return locale.toString(localTime(date).date(), QStringLiteral("ddd d"));
}

QString weekdayText(Date date, const QLocale& locale) {
    return locale.toString(localTime(date).date(), QStringLiteral("ddd"));
}
