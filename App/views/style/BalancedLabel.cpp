// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/BalancedLabel.h"

#include "views/style/ViewStyle.h"

#include <QPainter>
#include <QStyle>

BalancedLabel::BalancedLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
}

void BalancedLabel::paintEvent(QPaintEvent* /*event*/) {
    const QRect room = contentsRect();
    const QSize size(balancedWidth(text(), font(), room.width()), room.height());
    const Qt::Alignment where = QStyle::visualAlignment(layoutDirection(), alignment());
    const QRect place = QStyle::alignedRect(Qt::LeftToRight, where, size, room);
    const int flags = static_cast<int>(where) | Qt::TextWordWrap | Qt::TextForceLeftToRight; // our texts are English
    QPainter painter(this);
    style()->drawItemText(&painter, place, flags, palette(), isEnabled(), text(), foregroundRole());
}
