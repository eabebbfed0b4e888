// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSpinBox>

#include <cstdint>

/// A number field with arrows that can be held down. A value from elsewhere may lie outside the range; it is shown as
/// it is until the user changes it. What is typed beyond the range becomes its nearer end.
class StepperBox final : public QSpinBox {
    Q_OBJECT

public:
    /// The user can choose whole numbers from `least` to `most`, both included.
    StepperBox(int least, int most, QWidget* parent = nullptr);

    /// Shows a value that the user did not choose, without emitting `chosen`.
    void setStored(std::int64_t stored);

Q_SIGNALS:
    /// The user chose a value, which is within the range.
    void chosen(int value);

protected:
    void stepBy(int steps) override;
    QValidator::State validate(QString& input, int& position) const override;
    void fixup(QString& input) const override;

private:
    int least_;
    int most_;
    bool isSetting_ = false;

    void choose(int value);
};
