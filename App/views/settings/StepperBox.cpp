// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/settings/StepperBox.h"

#include <algorithm>
#include <limits>

StepperBox::StepperBox(int least, int most, QWidget* parent) : QSpinBox(parent), least_(least), most_(most) {
    setRange(least, most);
    setAccelerated(true);
    setKeyboardTracking(false); // a number that is still being typed does not count
    connect(this, &QSpinBox::valueChanged, this, [this](int value) {
        if (!isSetting_)
            choose(value);
    });
}

void StepperBox::setStored(std::int64_t stored) {
    using Limits = std::numeric_limits<int>;
    const auto shown = static_cast<int>(std::clamp<std::int64_t>(stored, Limits::min(), Limits::max()));
    const int minimumShown = std::min(least_, shown);
    const int maximumShown = std::max(most_, shown);
    isSetting_ = true;
    // Setting a range, even the same one, releases the arrow that the user holds.
    if (minimum() != minimumShown || maximum() != maximumShown)
        setRange(minimumShown, maximumShown);
    if (value() != shown) // otherwise keep what is being typed
        setValue(shown);
    isSetting_ = false;
}

void StepperBox::stepBy(int steps) {
    // From outside the range the first step leads into it.
    const auto wanted = std::int64_t{value()} + steps;
    const auto next = static_cast<int>(std::clamp<std::int64_t>(wanted, least_, most_));
    if (next != value())
        choose(next);
}

QValidator::State StepperBox::validate(QString& input, int& position) const {
    constexpr int mostDigits = 3;
    const QValidator::State state = QSpinBox::validate(input, position);
    // QSpinBox refuses the digit that leads beyond the range, so that of 99 only the 9 would be left.
    bool isNumber = false;
    input.toUInt(&isNumber);
    return state == QValidator::Invalid && isNumber && input.size() <= mostDigits ? QValidator::Intermediate : state;
}

void StepperBox::fixup(QString& input) const {
    bool isNumber = false;
    const int typed = input.toInt(&isNumber);
    if (isNumber)
        input = QString::number(std::clamp(typed, least_, most_));
    else
        QSpinBox::fixup(input);
}

void StepperBox::choose(int value) {
    const int inside = std::clamp(value, least_, most_);
    setStored(inside);
    Q_EMIT chosen(inside);
}
