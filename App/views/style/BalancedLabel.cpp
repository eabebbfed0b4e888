// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/BalancedLabel.h"

#include "views/style/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStyle>

#include <cmath>

BalancedLabel::BalancedLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
}

BalancedLabel::Known& BalancedLabel::known() const {
    if (known_.unbroken.isEmpty() || known_.text != text() || known_.font != font()) {
        const QMargins margins = contentsMargins();
        const int text = static_cast<int>(std::ceil(QFontMetricsF(font()).horizontalAdvance(this->text())));
        const int width = text + 1 + margins.left() + margins.right();
        known_ = {.text = this->text(), .font = font(), .unbroken = {width, QLabel::heightForWidth(width)}};
    }
    return known_;
}

int BalancedLabel::heightForWidth(int width) const {
    // Most texts are short. Layouts ask for many widths, and each answer by QLabel lays the text out.
    const QSize unbroken = known().unbroken;
    return width >= unbroken.width() ? unbroken.height() : QLabel::heightForWidth(width);
}

void BalancedLabel::paintEvent(QPaintEvent* /*event*/) {
    const QRect room = contentsRect();
    Known& known = this->known();
    const bool isBroken = width() < known.unbroken.width();
    if (isBroken && known.room != room.width()) {
        known.room = room.width();
        known.balancedWidth = balancedWidth(text(), font(), room.width());
    }
    const QSize size(isBroken ? known.balancedWidth : room.width(), room.height());
    const Qt::Alignment where = QStyle::visualAlignment(layoutDirection(), alignment());
    const QRect place = QStyle::alignedRect(Qt::LeftToRight, where, size, room);
    const int flags = static_cast<int>(where) | Qt::TextWordWrap | Qt::TextForceLeftToRight; // our texts are English
    QPainter painter(this);
    style()->drawItemText(&painter, place, flags, palette(), isEnabled(), text(), foregroundRole());
}
