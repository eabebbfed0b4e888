// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/HistoryPlot.h"

#include "views/style/ViewStyle.h"
#include "views/text/TimeText.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QLineF>
#include <QList>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

constexpr int annotationSize = 9;
constexpr double annotationSpacing = 1;
constexpr double annotationPlate = 3; ///< of background beside the text
constexpr double labelSpacing = 3;    ///< between the area and the names of times
constexpr double percentSpacing = 6;  ///< between the area and the charges, which end at one edge
constexpr double lineWidth = 2;
constexpr double ruleWidth = 1.5;

QString percentText(int percent) {
    return QString::number(percent) + QLatin1Char('%');
}

} // namespace

HistoryPlot::HistoryPlot(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("historyChartPlot"));
    setAttribute(Qt::WA_TransparentForMouseEvents); // they are for the chart
}

void HistoryPlot::useFonts() {
    const QFont caption = textFont(TextStyle::caption2);
    if (caption == caption_ && logicalDpiY() == dpi_)
        return; // these fonts know their metrics already
    dpi_ = logicalDpiY();
    caption_ = axisFont_ = annotationFont_ = caption;
    // The marks of a week must fit side by side, however large the desktop's font is.
    constexpr int largest = 13;
    if (QFontInfo(caption).pixelSize() > largest)
        axisFont_.setPixelSize(largest);
    annotationFont_.setPixelSize(annotationSize);
}

void HistoryPlot::setContent(const HistoryChart::Content& content) {
    content_ = content;
    layOut();
    update();
}

void HistoryPlot::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layOut();
}

double HistoryPlot::x(Date date) const {
    return area_.left() + (date - content_.since) / (content_.now - content_.since) * area_.width();
}

double HistoryPlot::y(double percent) const {
    constexpr double wholePercent = 100;
    return area_.bottom() - percent / wholePercent * area_.height();
}

QPointF HistoryPlot::place(Date date, double percent) const {
    return {x(date), y(percent)};
}

bool HistoryPlot::hasRule() const {
    return content_.limit && *content_.limit >= 0 && *content_.limit <= 100;
}

QPen HistoryPlot::rulePen() const {
    QPen pen(content_.rule, ruleWidth, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setDashPattern({5 / ruleWidth, 3 / ruleWidth}); // 5 pixels on, 3 off; QPen counts in units of its width
    pen.setMiterLimit(10);
    return pen;
}

QRectF HistoryPlot::ruleText() const {
    if (!hasRule())
        return {};
    const QFontMetricsF metrics(annotationFont_);
    QRectF place(0, 0, metrics.horizontalAdvance(QString::fromStdString(limitText(*content_.limit))) + annotationPlate,
                 metrics.height() + annotationSpacing);
    place.moveBottomRight({area_.right(), y(static_cast<double>(*content_.limit))});
    return place;
}

void HistoryPlot::layOut() {
    useFonts();
    const QFontMetricsF metrics(axisFont_);
    const double right = std::ceil(metrics.horizontalAdvance(percentText(100))) + percentSpacing;
    const double below = std::ceil(metrics.height()) + labelSpacing;
    // Room above for half of the text at 100 %, and for the text of a limit that is close to it.
    double above = std::ceil(metrics.height() / 2);
    if (hasRule()) {
        const double share = std::max(static_cast<double>(*content_.limit) / 100, 0.5);
        const double atRule = (height() - below) * (1 - share);
        above = std::max(above, std::ceil((ruleText().height() - atRule) / share));
    }
    area_ = QRectF(0, above, width() - right, height() - above - below);
    timeNames_.clear();
    const auto add = [&](Date from, Date until, const QString& text) {
        const Date middle = from + (until - from) / 2;
        const double half = metrics.horizontalAdvance(text) / 2;
        const bool isDay = until > from;
        if (x(middle) >= half && x(middle) <= width() - half && (!isDay || x(until) - x(from) >= 2 * half))
            timeNames_.push_back({middle, text}); // else it would be cut off, or run into its neighbour
    };
    const std::vector<Date>& marks = content_.marks;
    const bool namesDays = content_.days != 1;
    if (namesDays && !marks.empty())
        add(content_.since, marks.front(), weekdayText(content_.since));
    for (std::size_t i = 0; i < marks.size(); ++i) {
        const Date next = i + 1 < marks.size() ? marks[i + 1] : content_.now;
        add(marks[i], namesDays ? next : marks[i], namesDays ? weekdayText(marks[i]) : shortTime(marks[i]));
    }
}

void HistoryPlot::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.setLayoutDirection(textDirection);
    drawMarks(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    drawLine(painter);
    if (hasRule())
        drawRule(painter); // with its text, on its plate, over the line
}

void HistoryPlot::drawMarks(QPainter& painter) const {
    constexpr double wide = 100; // enough for every text
    const double height = QFontMetricsF(axisFont_).height();
    painter.setFont(axisFont_);
    const QColor window = palette().color(QPalette::Window);
    const double hairline = 1 / painter.deviceTransform().m22();
    const auto grid = [&](double share) {
        return hasHighContrast(palette()) ? shapeColorOn(window, palette()) : mixed(content_.secondary, window, share);
    };
    painter.setPen(content_.secondary);
    for (const Date mark : content_.marks)
        painter.fillRect(onDevicePixels(painter, {x(mark), area_.top(), hairline, area_.height()}), grid(0.18));
    for (const int percent : {0, 50, 100}) {
        painter.fillRect(onDevicePixels(painter, {area_.left(), y(percent), area_.width(), hairline}), grid(0.35));
        painter.drawText(QRectF(0, y(percent) - height / 2, width(), height), Qt::AlignRight | Qt::AlignVCenter,
                         percentText(percent));
    }
    for (const TimeName& name : timeNames_)
        painter.drawText(QRectF(x(name.middle) - wide / 2, area_.bottom() + labelSpacing, wide, height),
                         Qt::AlignHCenter | Qt::AlignTop, name.text);
}

void HistoryPlot::drawLine(QPainter& painter) const {
    // Lines one by one, with square ends: one stroke around all of a week takes six times as long, round ends four.
    QList<QLineF> lines;
    const auto placeOf = [this](const Point& point) { return place(point.date, static_cast<double>(point.pct)); };
    const std::vector<Point>& points = content_.points;
    const auto isFlat = [&points](std::size_t i) { // from the one before; a clock may have been set back between them
        return i < points.size() && points[i].seg == points[i - 1].seg && points[i].pct == points[i - 1].pct &&
               points[i].date >= points[i - 1].date;
    };
    std::size_t from = 0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (isFlat(i) && isFlat(i + 1))
            continue; // one line for all of it
        if (points[i].seg == points[i - 1].seg)
            lines.emplaceBack(placeOf(points[from]), placeOf(points[i]));
        from = i;
    }
    painter.setPen(QPen(content_.line, lineWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.setClipRect(area_.adjusted(0, -lineWidth / 2, 0, lineWidth / 2));
    painter.drawLines(lines);
    painter.setClipping(false);
}

void HistoryPlot::drawRule(QPainter& painter) const {
    // One of its sides is between two pixels, since both cannot be.
    const double upper =
        onDevicePixels(painter, {0, y(static_cast<double>(*content_.limit)) - ruleWidth / 2, 1, 1}).top();
    painter.setPen(rulePen());
    painter.drawLine(QPointF(area_.left(), upper + ruleWidth / 2), QPointF(area_.right(), upper + ruleWidth / 2));
    const QRectF place = ruleText();
    // The plate is no higher than the letters, so that the rule and most of the charge line stay in sight.
    const QFontMetricsF metrics(annotationFont_);
    QRectF plate(0, 0, place.width(), metrics.capHeight() + 2);
    plate.moveBottomRight(place.bottomRight() - QPointF(0, annotationSpacing + metrics.descent() - 1));
    painter.fillRect(plate, palette().color(QPalette::Window));
    painter.setFont(annotationFont_);
    painter.setPen(content_.ruleText);
    painter.drawText(place.adjusted(annotationPlate, 0, 0, -annotationSpacing), Qt::AlignRight | Qt::AlignBottom,
                     QString::fromStdString(limitText(*content_.limit)));
}
