// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/LinkButton.h"

#include "views/style/KeyboardFocus.h"
#include "views/style/ViewStyle.h"

#include <QPainter>
#include <QStyleOptionFocusRect>

LinkButton::LinkButton(const QString& text, QWidget* parent) : QAbstractButton(parent) {
    setText(text);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void LinkButton::setColor(const QColor& color) {
    color_ = color;
    update();
}

QSize LinkButton::sizeHint() const {
    return fontMetrics().size(Qt::TextSingleLine, text());
}

void LinkButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QFont underlined = font();
    underlined.setUnderline(underMouse() || showsFocus(*this));
    painter.setFont(underlined);
    painter.setPen(isDown() ? color_.darker(130) : color_);
    painter.setLayoutDirection(textDirection);
    painter.drawText(rect(), Qt::AlignCenter, text());
    if (showsFocus(*this)) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}
