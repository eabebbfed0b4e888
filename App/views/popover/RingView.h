// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QWidget>

#include <cstdint>

/// The charge as a ring that fills clockwise from the top, with the percentage in its middle.
class RingView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int frame = 104; ///< its width and height, in pixels

    explicit RingView(QWidget* parent = nullptr);

    /// Sets the charge in whole percent, and the colours of the arc and of the rest of the ring.
    void setContent(std::int64_t percent, const QColor& color, const QColor& track);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::int64_t percent = 0;
    QColor color;
    QColor track_;
};
