// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

/// A row of choices, one of which is selected. The arrow keys move the selection.
class SegmentedPicker final : public QWidget {
    Q_OBJECT

public:
    /// The choices from the left; the first is selected.
    explicit SegmentedPicker(const QStringList& choices, QWidget* parent = nullptr);

Q_SIGNALS:
    /// The user selected another choice.
    void chosen(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
};
