// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/settings/ToggleSwitch.h"

#include "views/style/KeyboardFocus.h"
#include "views/style/ViewStyle.h"

#include <QPainter>

namespace {

constexpr QSize trackSize(38, 22);
constexpr int room = 3; ///< around it, for the focus ring
constexpr qreal knobGap = 2.5;

} // namespace

ToggleSwitch::ToggleSwitch(QWidget* parent) : QCheckBox(parent) {
    setFixedSize(sizeHint());
    setAttribute(Qt::WA_Hover);
    setProperty("roomAround", room);
}

QSize ToggleSwitch::sizeHint() const {
    return trackSize + QSize(2 * room, 2 * room);
}

bool ToggleSwitch::hitButton(const QPoint& point) const {
    return rect().contains(point);
}

void ToggleSwitch::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : 0.45);
    const QRectF track = onDevicePixels(painter, QRectF(QPointF(room, room), QSizeF(trackSize)));
    const qreal radius = track.height() / 2;
    const QColor card = palette().color(QPalette::Base);
    const QColor filling =
        isChecked() ? tintColorOn(card, Tint::accent, palette(), Use::graphics) : shapeColorOn(card, palette());
    painter.setPen(Qt::NoPen);
    painter.setBrush(underMouse() && isEnabled() ? mixed(palette().color(QPalette::WindowText), filling, 0.12)
                                                 : filling);
    painter.drawRoundedRect(track, radius, radius);
    QRectF knob(0, 0, track.height() - 2 * knobGap, track.height() - 2 * knobGap);
    const bool atRight = isChecked() != (layoutDirection() == Qt::RightToLeft);
    knob.moveCenter(QPointF(atRight ? track.right() - radius : track.left() + radius, track.center().y()));
    painter.setBrush(contrast(Qt::white, filling) >= 3 ? Qt::white : Qt::black);
    painter.drawEllipse(knob);
    if (showsFocus(*this)) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRoundedRect(track.marginsAdded({2, 2, 2, 2}), radius + 2, radius + 2);
    }
}
