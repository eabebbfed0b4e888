// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/ThinScrollBar.h"

#include "views/style/ViewStyle.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

ThinScrollBar::ThinScrollBar(QScrollBar* other, QWidget* parent) : QScrollBar(Qt::Vertical, parent), other_(other) {
    setFixedWidth(thickness);
    setCursor(Qt::ArrowCursor);
    setAccessibleName(QStringLiteral("Scroll"));
    connect(other, &QScrollBar::rangeChanged, this, &ThinScrollBar::follow);
    // QScrollArea sets the length of a page, which is that of the handle, after the range, and no signal tells of it.
    connect(other, &QScrollBar::rangeChanged, this, &ThinScrollBar::follow, Qt::QueuedConnection);
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
    const QColor window = palette().color(QPalette::Window);
    const bool isTouched = isSliderDown() || underMouse();
    const double spare = isTouched ? 0 : 1;
    const QColor color =
        isTouched ? mixed(palette().color(QPalette::WindowText), window, 0.7) : shapeColorOn(window, palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    const QRectF drawn = QRectF(handle & rect()).adjusted(spare, 0, -spare, 0);
    painter.drawRoundedRect(drawn, drawn.width() / 2, drawn.width() / 2);
}

void ThinScrollBar::enterEvent(QEnterEvent* event) {
    update();
    QScrollBar::enterEvent(event);
}

void ThinScrollBar::leaveEvent(QEvent* event) {
    update();
    QScrollBar::leaveEvent(event);
}
