// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/SegmentedPicker.h"

#include "views/style/Accessibility.h"
#include "views/style/KeyboardFocus.h"
#include "views/style/ViewStyle.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr qreal radius = controlRadius;
constexpr int inset = 2;
constexpr int leastHeight = 30;

/// Behind the segments.
QColor troughColor(const QPalette& palette) {
    return fillColor(palette, Filling::rest);
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

class Segment final : public QAbstractButton {
public:
    Segment(const QString& text, QWidget* parent) : QAbstractButton(parent) {
        setAccessibleRole(*this, QAccessible::RadioButton);
        setText(text);
        setCheckable(true);
        setAttribute(Qt::WA_Hover);
        QFont weight; // alone, so that the rest follows the desktop
        weight.setWeight(QFont::Medium);
        setFont(weight);
        setFocusPolicy(Qt::StrongFocus);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }
    QSize sizeHint() const override {
        const QSize text = fontMetrics().size(Qt::TextSingleLine, this->text());
        return {text.width() + 16, std::max(leastHeight, static_cast<int>(std::lround(text.height() * 1.4)))};
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF pill = QRectF(rect()).marginsRemoved(QMarginsF(inset + .5, inset + .5, inset + .5, inset + .5));
        const bool isFilled = isChecked() && hasHighContrast(palette());
        if (isChecked()) {
            painter.setPen(isFilled ? QPen(Qt::NoPen) : shapeColorOn(troughColor(palette()), palette()));
            painter.setBrush(isFilled ? palette().color(QPalette::WindowText)
                                      : mixed(Qt::white, cardColor(palette()), isDark(palette()) ? 0.18 : 1));
            painter.drawRoundedRect(pill, radius - inset, radius - inset);
        } else if (underMouse()) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(fillColor(palette(), isDown() ? Filling::pressed : Filling::hover));
            painter.drawRoundedRect(pill, radius - inset, radius - inset);
        }
        if (showsFocus(*this)) {
            painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(pill, radius - inset, radius - inset);
        }
        painter.setPen(isFilled      ? cardColor(palette())
                       : isChecked() ? palette().color(QPalette::WindowText)
                                     : tintColorOn(troughColor(palette()), Tint::secondary, palette()));
        painter.setLayoutDirection(textDirection);
        painter.drawText(rect(), Qt::AlignCenter, fontMetrics().elidedText(text(), Qt::ElideRight, width() - 8));
    }
};

} // namespace

SegmentedPicker::SegmentedPicker(const QStringList& choices, QWidget* parent) : QWidget(parent) {
    setAccessibleRole(*this, QAccessible::Grouping);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* group = new QButtonGroup(this); // exclusive, with arrow keys
    for (const QString& choice : choices) {
        auto* segment = new Segment(choice, this);
        segment->setChecked(group->buttons().isEmpty());
        group->addButton(segment, static_cast<int>(group->buttons().size()));
        layout->addWidget(segment);
    }
    connect(group, &QButtonGroup::idToggled, this, [this](int index, bool taken) {
        if (taken)
            Q_EMIT chosen(index);
    });
}

void SegmentedPicker::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    drawFilling(painter, rect(), palette(), Filling::rest, false);
}
