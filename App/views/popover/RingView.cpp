// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/RingView.h"

#include "views/style/Accessibility.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int padding = 6;
constexpr qreal lineWidth = 11;
constexpr int textSize = 28;

/// A number in a font's own digits, but each in a cell of the widest one's width, so that the number does not shift
/// while it changes. Fonts may have such digits beside their usual ones, but Qt before 6.7 cannot select them.
class TabularText {
public:
    TabularText(const QString& text, const QFont& font) : text_(text), font_(font), metrics_(font) {
        for (const char digit : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'})
            digitWidth_ = std::max(digitWidth_, metrics_.horizontalAdvance(QLatin1Char(digit)));
    }
    qreal width() const {
        qreal sum = 0;
        for (const QChar letter : text_)
            sum += cellWidth(letter);
        return sum;
    }
    /// In the middle; capitals and digits reach as far above it as below.
    void draw(QPainter& painter, QPointF middle) const {
        painter.setFont(font_);
        QPointF start = middle + QPointF(-width() / 2, metrics_.capHeight() / 2);
        for (const QChar letter : text_) {
            const qreal margin = (cellWidth(letter) - metrics_.horizontalAdvance(letter)) / 2;
            painter.drawText(start + QPointF(margin, 0), letter);
            start.rx() += cellWidth(letter);
        }
    }

private:
    QString text_;
    QFont font_;
    QFontMetricsF metrics_;
    qreal digitWidth_ = 0;

    qreal cellWidth(QChar letter) const { return letter.isDigit() ? digitWidth_ : metrics_.horizontalAdvance(letter); }
};

/// In the desktop's font, since desktops have no rounded one, sized for the ring; smaller where the text would touch
/// the line.
TabularText ringText(QFont font, std::int64_t percent, qreal room) {
    const QString text = QString::number(percent) + QLatin1Char('%');
    font.setWeight(QFont::DemiBold);
    font.setPixelSize(textSize);
    const qreal width = TabularText(text, font).width();
    if (width > room)
        font.setPixelSize(std::max(1, static_cast<int>(textSize * room / width)));
    return {text, font};
}

} // namespace

RingView::RingView(QWidget* parent) : QWidget(parent) {
    setFixedSize(frame, frame);
    setAccessibleRole(*this, QAccessible::Graphic);
    setAccessibleDescription(QStringLiteral("Charge of the battery"));
}

void RingView::setContent(std::int64_t newPercent, const QColor& newColor, const QColor& track) {
    if (newPercent == percent && newColor == color && track == track_)
        return;
    percent = newPercent;
    color = newColor;
    track_ = track;
    setAccessibleValue(*this, QString::number(percent) + QLatin1String(" %"));
    update();
}

QSize RingView::sizeHint() const {
    return {frame, frame};
}

void RingView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF circle = QRectF(rect()).marginsRemoved(QMarginsF(padding, padding, padding, padding));
    painter.setPen(QPen(track_, lineWidth, Qt::SolidLine, Qt::FlatCap));
    painter.drawEllipse(circle);
    if (const std::int64_t filled = std::clamp<std::int64_t>(percent, 0, 100); filled > 0) {
        constexpr int sixteenths = 16; // of a degree, in which QPainter counts, anticlockwise from three o'clock
        painter.setPen(QPen(color, lineWidth, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(circle, 90 * sixteenths,
                        -static_cast<int>(std::lround(static_cast<double>(filled) * 3.6 * sixteenths)));
    }
    const qreal room = (circle.width() - lineWidth) * 0.84; // across the middle, where the text is
    painter.setPen(palette().color(QPalette::WindowText));
    ringText(font(), percent, room).draw(painter, circle.center());
}
