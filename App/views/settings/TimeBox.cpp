// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/settings/TimeBox.h"

#include "views/style/Accessibility.h"
#include "views/style/ViewStyle.h"
#include "views/text/SettingsForm.h"
#include "views/text/TimeText.h"

#include <QEvent>
#include <QLineEdit>
#include <QLocale>
#include <QSignalBlocker>

TimeBox::TimeBox(QWidget* parent) : QTimeEdit(parent) {
    setLayoutDirection(textDirection); // or Qt would write the minutes before the hours
    setDisplayFormat(shortTimeFormat(QLocale::system()));
    setKeyboardTracking(false); // a time that is still being typed does not count
    setWrapping(true);          // after 23 comes 0
    setAccessibleValue(*this, text());
    lineEdit()->installEventFilter(this);
    lineEdit()->setObjectName(QStringLiteral("timeText")); // under its usual name, Qt does not present it
    setAccessibleWhole(*this, QAccessible::SpinBox);       // Qt's own has the number 0 as its value
    connect(this, &QTimeEdit::timeChanged, this, [this](QTime time) {
        constexpr int minutesOfHour = 60;
        setAccessibleValue(*this, text());
        Q_EMIT chosen(time.hour() * minutesOfHour + time.minute());
    });
}

void TimeBox::setStored(std::int64_t minutes, Calendar::TimeOfDay otherwise) {
    const auto stored = timeOfMinutes(minutes);
    const QTime shown = stored ? QTime(stored->hour, stored->minute) : QTime(otherwise.hour, otherwise.minute);
    if (shown == time())
        return; // keep what is being typed
    const QSignalBlocker quiet(this);
    setTime(shown);
    setAccessibleValue(*this, text());
}

bool TimeBox::eventFilter(QObject* watched, QEvent* event) {
    // On a click Qt only places the cursor, where no more digits fit in. Once the field has handled the click, select
    // the section that was clicked.
    if (watched == lineEdit() && event->type() == QEvent::MouseButtonRelease) {
        QMetaObject::invokeMethod(
            this, [this] { setSelectedSection(currentSection()); }, Qt::QueuedConnection);
    }
    return QTimeEdit::eventFilter(watched, event);
}
