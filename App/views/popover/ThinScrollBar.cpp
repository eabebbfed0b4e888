// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/ThinScrollBar.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

ThinScrollBar::ThinScrollBar(QScrollBar* other, QWidget* parent) : QScrollBar(Qt::Vertical, parent), other_(other) {
    setFixedWidth(thickness);
    setCursor(Qt::ArrowCursor);
    connect(other, &QScrollBar::rangeChanged, this, &ThinScrollBar::follow);
    connect(other, &QScrollBar::valueChanged, this, &QScrollBar::setValue);
    connect(this, &QScrollBar::valueChanged, other, &QScrollBar::setValue);
    follow();
}

void ThinScrollBar::follow() {
    setRange(other_->minimum(), other_->maximum());
    setPageStep(other_->pageStep());
    setSingleStep(other_->singleStep());
    setValue(other_->value());
    setVisible(maximum() > minimum());
}

void ThinScrollBar::paintEvent(QPaintEvent* /*event*/) {
    QStyleOptionSlider option;
    initStyleOption(&option);
    // Drawn where the style expects the handle, since that is where it can be grabbed.
    const QRect handle = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(isSliderDown() || underMouse() ? 0.6F : 0.35F);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(handle & rect()), thickness / 2.0, thickness / 2.0);
}

void ThinScrollBar::enterEvent(QEnterEvent* event) {
    update();
    QScrollBar::enterEvent(event);
}

void ThinScrollBar::leaveEvent(QEvent* event) {
    update();
    QScrollBar::leaveEvent(event);
}
