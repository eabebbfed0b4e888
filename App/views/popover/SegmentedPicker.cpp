// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/SegmentedPicker.h"

#include "views/style/Accessibility.h"
#include "views/style/KeyboardFocus.h"
#include "views/style/ViewStyle.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPainter>

#include <cmath>

namespace {

constexpr qreal radius = 6;
constexpr int inset = 2;

/// Behind the segments.
QColor troughColor(const QPalette& palette) {
    return mixed(palette.color(QPalette::WindowText), palette.color(QPalette::Window), 0.11);
}

class Segment final : public QAbstractButton {
public:
    Segment(const QString& text, QWidget* parent) : QAbstractButton(parent) {
        setAccessibleRole(*this, QAccessible::RadioButton);
        setText(text);
        setCheckable(true);
        setFocusPolicy(Qt::StrongFocus);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }
    QSize sizeHint() const override {
        const QSize text = fontMetrics().size(Qt::TextSingleLine, this->text());
        return {text.width() + 16, static_cast<int>(std::lround(text.height() * 1.4))};
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF pill = QRectF(rect()).marginsRemoved(QMarginsF(inset + .5, inset + .5, inset + .5, inset + .5));
        if (isChecked()) {
            const bool dark = palette().color(QPalette::Window).lightness() < 128;
            painter.setPen(shapeColorOn(troughColor(palette()), palette()));
            painter.setBrush(dark ? palette().color(QPalette::Window).lighter(190) : palette().color(QPalette::Base));
            painter.drawRoundedRect(pill, radius - inset, radius - inset);
        }
        if (showsFocus(*this)) {
            painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(pill, radius - inset, radius - inset);
        }
        painter.setPen(palette().color(QPalette::WindowText));
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
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(troughColor(palette()));
    painter.drawRoundedRect(rect(), radius, radius);
}
