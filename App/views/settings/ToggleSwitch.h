// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCheckBox>

/// A switch with a knob. To screen readers it is a check box.
class ToggleSwitch final : public QCheckBox {
    Q_OBJECT

public:
    explicit ToggleSwitch(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool hitButton(const QPoint& point) const override;
    void paintEvent(QPaintEvent* event) override;
};
