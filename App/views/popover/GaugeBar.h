// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QProgressBar>

/// A thin bar that is filled to its value.
class GaugeBar final : public QProgressBar {
    Q_OBJECT

public:
    explicit GaugeBar(QWidget* parent = nullptr);

    /// Sets the colours of the filled part and of the whole bar behind it.
    void setColors(const QColor& color, const QColor& track);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor color_;
    QColor track_;
};
