// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/FlatStyle.h"

#include "views/style/KeyboardFocus.h"
#include "views/style/ViewStyle.h"

#include <QAbstractSpinBox>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>

#include <algorithm>

namespace {

constexpr int leastHeight = 28;
constexpr int padding = 12;     ///< beside a text
constexpr int listPadding = 10; ///< beside the text of a list, as beside the signs of a number
constexpr int buttonWidth = 28; ///< of minus, plus and the mark of a list
constexpr int fieldWidth = 116; ///< least, the same for all fields

/// The widest text of a field, so that all are of one width in every font.
int widthOfField(const QFontMetrics& metrics) {
    return std::max(fieldWidth, metrics.horizontalAdvance(QStringLiteral("Submarine")) + 2 * padding + buttonWidth);
}

Filling fillingOf(const QStyleOption& option) {
    if (!(option.state & QStyle::State_Enabled))
        return Filling::rest;
    if (option.state & QStyle::State_Sunken)
        return Filling::pressed;
    return option.state & QStyle::State_MouseOver ? Filling::hover : Filling::rest;
}

QPen strokeOf(const QStyleOption& option, double width) {
    return {option.palette.color(QPalette::WindowText), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

/// A minus, or a plus.
void drawSign(QPainter& painter, const QRect& place, bool isPlus) {
    constexpr qreal reach = 4;
    const QPointF middle = QRectF(place).center();
    QPainterPath sign(middle - QPointF(reach, 0)); // one path, or the strokes would be darker where they cross
    sign.lineTo(middle + QPointF(reach, 0));
    if (isPlus) {
        sign.moveTo(middle - QPointF(0, reach));
        sign.lineTo(middle + QPointF(0, reach));
    }
    painter.drawPath(sign);
}

/// The mark of a list that opens downwards.
void drawChevron(QPainter& painter, const QRect& place) {
    const QPointF middle = QRectF(place).center();
    painter.drawPolyline(QPolygonF{middle + QPointF(-4, -2), middle + QPointF(0, 2), middle + QPointF(4, -2)});
}

} // namespace

FlatStyle::FlatStyle(QObject* owner) {
    setParent(owner);
}

void FlatStyle::dress(QWidget& widget) {
    widget.setStyle(this);
    widget.setAttribute(Qt::WA_Hover);
    QFont font; // the weight alone, so that the rest follows the desktop
    font.setWeight(QFont::Medium);
    widget.setFont(font);
    if (auto* field = qobject_cast<QAbstractSpinBox*>(&widget)) {
        field->setAlignment(Qt::AlignCenter);
        QPalette colours;
        colours.setColor(QPalette::Base, Qt::transparent); // of the line in it
        field->findChild<QLineEdit*>()->setPalette(colours);
    }
}

void FlatStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (element != CE_PushButton || button == nullptr || widget == nullptr) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    drawFilling(*painter, option->rect, option->palette, fillingOf(*option), showsFocus(*widget));
    painter->save();
    painter->setLayoutDirection(textDirection);
    painter->setPen(option->palette.color(QPalette::WindowText));
    painter->drawText(option->rect, Qt::AlignCenter, button->text);
    painter->restore();
}

void FlatStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                   const QWidget* widget) const {
    const auto* field = qstyleoption_cast<const QStyleOptionSpinBox*>(option);
    if ((control != CC_ComboBox && field == nullptr) || widget == nullptr) {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    painter->save();
    const bool isFocused = widget->hasFocus() && (field != nullptr || showsFocus(*widget)); // a field may be typed in
    drawFilling(*painter, option->rect, option->palette, field != nullptr ? Filling::rest : fillingOf(*option),
                isFocused && showsFocus(*widget));
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(strokeOf(*option, 1.5));
    if (field == nullptr) {
        drawChevron(*painter, subControlRect(control, option, SC_ComboBoxArrow, widget));
    } else {
        for (const auto& [part, step] : {std::pair(SC_SpinBoxDown, QAbstractSpinBox::StepDownEnabled),
                                         std::pair(SC_SpinBoxUp, QAbstractSpinBox::StepUpEnabled)}) {
            const QRect place = subControlRect(control, option, part, widget);
            const bool isPossible = field->stepEnabled.testFlag(step);
            if (isPossible && (option->activeSubControls & part) && fillingOf(*option) != Filling::rest)
                drawFilling(*painter, place, option->palette, fillingOf(*option), false);
            painter->setPen(strokeOf(*option, 1.5));
            painter->setOpacity(isPossible ? 1 : 0.35);
            drawSign(*painter, place, part == SC_SpinBoxUp);
            painter->setOpacity(1);
        }
    }
    painter->restore();
}

QRect FlatStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                                const QWidget* widget) const {
    const QRect all = option->rect;
    const QRect end(all.right() + 1 - buttonWidth, all.top(), buttonWidth, all.height());
    const QRect start(all.topLeft(), end.size());
    if (control == CC_SpinBox && part == SC_SpinBoxUp)
        return end;
    if (control == CC_SpinBox && part == SC_SpinBoxDown)
        return start;
    if (control == CC_SpinBox && part == SC_SpinBoxEditField)
        return all.adjusted(buttonWidth, 2, -buttonWidth, -2);
    const bool isMirrored = option->direction == Qt::RightToLeft;
    if (control == CC_ComboBox && part == SC_ComboBoxArrow)
        return isMirrored ? start : end;
    if (control == CC_ComboBox && part == SC_ComboBoxEditField)
        return isMirrored ? all.adjusted(buttonWidth, 0, -listPadding, 0)
                          : all.adjusted(listPadding, 0, -buttonWidth, 0);
    return QProxyStyle::subControlRect(control, option, part, widget);
}

QSize FlatStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                  const QWidget* widget) const {
    const int height = std::max(leastHeight, option->fontMetrics.height() + 10);
    if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        type == CT_PushButton && button != nullptr)
        return {option->fontMetrics.horizontalAdvance(button->text) + 2 * padding, height};
    if (type == CT_SpinBox || type == CT_ComboBox)
        return {widthOfField(option->fontMetrics), height};
    return QProxyStyle::sizeFromContents(type, option, contents, widget);
}
