// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/TimeText.h"

#include <QDateTime>

#include <cmath>

namespace {

QDateTime localTime(Date date) {
    const double milliseconds = std::floor(date.time_since_epoch().count() * 1000);
    // Years that no clock shows are out of QDateTime's range.
    if (!(std::abs(milliseconds) < 1e15))
        return {};
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(milliseconds));
}

} // namespace

QString shortTimeFormat(const QLocale& locale) {
    // Some locales, the C locale among them, have seconds in their short format.
    return locale.timeFormat(QLocale::ShortFormat).remove(QLatin1String(":ss")).remove(QLatin1String(".ss"));
}

QString shortTime(Date date, const QLocale& locale) {
    return locale.toString(localTime(date).time(), shortTimeFormat(locale));
}

QString dayText(Date date, const QLocale& locale) {
    return locale.toString(localTime(date).date(), QStringLiteral("ddd d"));
}

QString weekdayText(Date date, const QLocale& locale) {
    return locale.toString(localTime(date).date(), QStringLiteral("ddd"));
}
