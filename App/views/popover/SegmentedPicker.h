// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

/// A row of choices of which one is taken. The arrow keys move the choice.
class SegmentedPicker final : public QWidget {
    Q_OBJECT

public:
    /// The choices from the left; the first is taken.
    explicit SegmentedPicker(const QStringList& choices, QWidget* parent = nullptr);

Q_SIGNALS:
    /// The user took another choice.
    void chosen(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
};
