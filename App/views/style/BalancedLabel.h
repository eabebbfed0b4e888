// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

/// A label for plain text that may take several lines, which are then about equally long.
class BalancedLabel : public QLabel {
public:
    explicit BalancedLabel(const QString& text, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
