// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/HistoryChart.h"

#include "views/popover/HistoryPlot.h"
#include "views/style/Accessibility.h"
#include "views/style/BalancedLabel.h"
#include "views/style/KeyboardFocus.h"
#include "views/style/ViewStyle.h"
#include "views/text/TimeText.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QStackedLayout>

#include <algorithm>
#include <cmath>

namespace {

QString readout(const Point& point) {
    return weekdayText(point.date) + QLatin1Char(' ') + shortTime(point.date) + QStringLiteral(" · ") +
           QString::number(point.pct) + QLatin1Char('%');
}

} // namespace

/// Over the line: the moment that is told, and the ring of the keyboard.
class HistoryChart::Overlay final : public QWidget {
public:
    explicit Overlay(HistoryChart* chart) : QWidget(chart), chart_(*chart) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        if (chart_.chosen_)
            drawReadout(painter, chart_.content_.points[*chart_.chosen_]);
        if (showsFocus(chart_)) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
            painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);
        }
    }

private:
    const HistoryChart& chart_;

    void drawReadout(QPainter& painter, const Point& point) const {
        constexpr double radius = 4; // of the dot
        const QRectF area = chart_.plot_->area();
        const QPointF place = chart_.place(point);
        painter.setPen(QPen(shapeColorOn(palette().color(QPalette::Window), palette()), 0)); // one device pixel
        painter.drawLine(QPointF(place.x(), area.top()), QPointF(place.x(), area.bottom()));
        painter.setPen(QPen(palette().color(QPalette::Window), 2));
        painter.setBrush(chart_.content_.line);
        painter.drawEllipse(place, radius, radius);
        // On the other half of the chart than the point, so that the line stays in sight.
        const QFontMetricsF metrics(font());
        const QString text = readout(point);
        QRectF plate(QPointF(), QSizeF(metrics.horizontalAdvance(text) + 16, metrics.height() + 8));
        const bool isBelow = place.y() < area.center().y();
        plate.moveCenter(
            {place.x(), isBelow ? area.bottom() - plate.height() / 2 - 2 : area.top() + plate.height() / 2 + 2});
        plate.moveLeft(std::clamp(plate.left(), 0.0, std::max(0.0, width() - plate.width())));
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::WindowText));
        painter.drawRoundedRect(plate, 6, 6);
        painter.setPen(palette().color(QPalette::Window));
        painter.setLayoutDirection(textDirection);
        painter.drawText(plate, Qt::AlignCenter, text);
    }
};

HistoryChart::HistoryChart(QWidget* parent)
    : QWidget(parent)
    , layers_(new QStackedLayout(this))
    , empty_(new BalancedLabel(QStringLiteral("Collecting history… a graph appears after a few minutes."), this))
    , overlay_(new Overlay(this)) {
    setObjectName(QStringLiteral("historyChart"));
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setAccessibleWhole(*this, QAccessible::Graphic);
    layers_->setContentsMargins(0, 0, 0, 0);
    empty_->setObjectName(QStringLiteral("historyChartEmpty"));
    empty_->setAlignment(Qt::AlignCenter);
    layers_->addWidget(empty_);
}

void HistoryChart::setContent(const Content& content) {
    // What is told stays, if the moment is still the same.
    const bool isStill = chosen_ && *chosen_ < content.points.size() && content_.days == content.days;
    content_ = content;
    overlay_->setFont(textFont(TextStyle::caption2));
    choose(isStill ? chosen_ : std::nullopt);
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, content.secondary);
    empty_->setPalette(colors);
    empty_->setFont(textFont(TextStyle::caption));
    if (content.points.size() < 2) {
        layers_->setCurrentWidget(empty_);
        setAccessibleName(empty_->text());
        return;
    }
    if (plot_ == nullptr)
        layers_->addWidget(plot_ = new HistoryPlot(this));
    plot_->setContent(content);
    layers_->setCurrentWidget(plot_); // which raises it
    overlay_->raise();
    setAccessibleName(QString::fromStdString(chartDescription(content.points, content.days)));
}

void HistoryChart::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    overlay_->setGeometry(rect());
}

bool HistoryChart::hasLine() const {
    return plot_ != nullptr && layers_->currentWidget() == plot_;
}

QPointF HistoryChart::place(const Point& point) const {
    return plot_->place(point.date, static_cast<double>(point.pct));
}

void HistoryChart::choose(std::optional<std::size_t> index) {
    chosen_ = index;
    setAccessibleValue(*this, index ? readout(content_.points[*index]) : QString());
    overlay_->update();
}

void HistoryChart::mouseMoveEvent(QMouseEvent* event) {
    QWidget::mouseMoveEvent(event);
    if (!hasLine())
        return;
    const double x = event->position().x();
    const auto distance = [&](const Point& point) { return std::abs(place(point).x() - x); };
    const auto nearest = std::ranges::min_element(content_.points, {}, distance);
    choose(static_cast<std::size_t>(nearest - content_.points.begin()));
}

void HistoryChart::leaveEvent(QEvent* event) {
    choose(std::nullopt);
    QWidget::leaveEvent(event);
}

void HistoryChart::keyPressEvent(QKeyEvent* event) {
    const std::size_t last = hasLine() ? content_.points.size() - 1 : 0;
    const std::size_t now = chosen_.value_or(last);
    if (last > 0 && event->key() == Qt::Key_Left)
        choose(chosen_ && now > 0 ? now - 1 : now);
    else if (last > 0 && event->key() == Qt::Key_Right)
        choose(std::min(now + 1, last));
    else if (last > 0 && event->key() == Qt::Key_Home)
        choose(0);
    else if (last > 0 && event->key() == Qt::Key_End)
        choose(last);
    else
        QWidget::keyPressEvent(event);
}

void HistoryChart::focusOutEvent(QFocusEvent* event) {
    choose(std::nullopt);
    QWidget::focusOutEvent(event);
}
