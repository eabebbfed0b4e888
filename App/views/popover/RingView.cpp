// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/RingView.h"

#include "views/style/ViewStyle.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int padding = 6;
constexpr qreal lineWidth = 11;
constexpr int textSize = 28;

/// The desktop's font, since desktops have no rounded one, sized for the ring; smaller where the text would touch the
/// line.
QFont ringFont(const QFont& base, const QString& text, qreal room) {
    QFont font = base;
    font.setPixelSize(textSize);
    font.setWeight(QFont::DemiBold);
    font = tabularFont(font);
    const qreal width = QFontMetricsF(font).horizontalAdvance(text);
    if (width > room)
        font.setPixelSize(std::max(1, static_cast<int>(textSize * room / width)));
    return font;
}

} // namespace

RingView::RingView(QWidget* parent) : QWidget(parent) {
    setFixedSize(frame, frame);
}

void RingView::setContent(std::int64_t newPercent, const QColor& newColor, const QColor& track) {
    if (newPercent == percent && newColor == color && track == track_)
        return;
    percent = newPercent;
    color = newColor;
    track_ = track;
    update();
}

QSize RingView::sizeHint() const {
    return {frame, frame};
}

void RingView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF circle = QRectF(rect()).marginsRemoved(QMarginsF(padding, padding, padding, padding));
    painter.setPen(QPen(track_, lineWidth, Qt::SolidLine, Qt::FlatCap));
    painter.drawEllipse(circle);
    if (const std::int64_t filled = std::clamp<std::int64_t>(percent, 0, 100); filled > 0) {
        constexpr int sixteenths = 16; // of a degree, in which QPainter counts, anticlockwise from three o'clock
        painter.setPen(QPen(color, lineWidth, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(circle, 90 * sixteenths,
                        -static_cast<int>(std::lround(static_cast<double>(filled) * 3.6 * sixteenths)));
    }
    const QString text = QString::number(percent) + QLatin1Char('%');
    const qreal room = (circle.width() - lineWidth) * 0.84; // across the middle, where the text is
    painter.setFont(ringFont(font(), text, room));
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignCenter, text);
}
