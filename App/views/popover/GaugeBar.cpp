// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/GaugeBar.h"

#include "views/style/ViewStyle.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr int thickness = 6;

} // namespace

GaugeBar::GaugeBar(QWidget* parent) : QProgressBar(parent) {
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void GaugeBar::setColors(const QColor& color, const QColor& track) {
    color_ = color;
    track_ = track;
    update();
}

QSize GaugeBar::sizeHint() const {
    return {4 * thickness, thickness};
}

void GaugeBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF bar = rect();
    const qreal radius = bar.height() / 2;
    painter.setBrush(track_);
    painter.drawRoundedRect(bar, radius, radius);
    if (hasHighContrast(palette())) {
        painter.setPen(shapeColorOn(palette().color(QPalette::Window), palette()));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(bar.adjusted(.5, .5, -.5, -.5), radius - .5, radius - .5);
        painter.setPen(Qt::NoPen);
    }
    const qreal share = maximum() > minimum() ? qreal(value() - minimum()) / (maximum() - minimum()) : 0;
    if (share <= 0)
        return;
    QRectF filled = bar;
    filled.setWidth(std::max(bar.height(), bar.width() * share)); // at least a dot
    if (layoutDirection() == Qt::RightToLeft)
        filled.moveRight(bar.right());
    painter.setBrush(color_);
    painter.drawRoundedRect(filled, radius, radius);
}
