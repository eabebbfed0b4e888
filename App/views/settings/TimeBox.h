// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Calendar.h"

#include <QTimeEdit>

#include <cstdint>

/// A time of day in hours and minutes, in the format of the user's locale. A click selects the hours or the minutes,
/// which can then be typed over.
class TimeBox final : public QTimeEdit {
    Q_OBJECT

public:
    explicit TimeBox(QWidget* parent = nullptr);

    /// Shows minutes since midnight that the user did not choose, or `otherwise` if they are not within a day.
    void setStored(std::int64_t minutes, Calendar::TimeOfDay otherwise);

Q_SIGNALS:
    /// The user chose a time, in minutes since midnight.
    void chosen(int minutes);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
