// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/HistoryPlot.h"

#include "views/style/ViewStyle.h"
#include "views/text/TimeText.h"

#include <QVBoxLayout>
#include <qcustomplot.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace {

constexpr int annotationSize = 9;
constexpr int annotationSpacing = 1;
constexpr int annotationPlate = 3; ///< of background beside the text
constexpr double lineWidth = 2;
constexpr double hairline = 0; ///< one device pixel, at every scale
constexpr double ruleWidth = 1.5;
constexpr int labelGap = 3; ///< between the chart and the names of times
constexpr int percentGap = 6;

/// The marked charges in percent. Their labels end at one edge, as numbers in a column do, and the widest is the last.
constexpr std::array<int, 3> markedPercents{0, 50, 100};

QString percentLabel(int percent) {
    return QString::number(percent) + QLatin1Char('%');
}

double seconds(Date date) {
    return date.time_since_epoch().count();
}

QFont annotationFont() {
    QFont font = textFont(TextStyle::caption2);
    font.setPixelSize(annotationSize);
    return font;
}

/// The caption font, but limited in size: the marks of a week must fit side by side, however large the desktop's font
/// is.
QFont axisFont() {
    constexpr int largest = 13;
    QFont font = textFont(TextStyle::caption2);
    if (QFontInfo(font).pixelSize() > largest)
        font.setPixelSize(largest);
    return font;
}

QColor faint(QColor color, int alpha) {
    color.setAlpha(alpha);
    return color;
}

/// 5 pixels on, 3 off; QPen counts in units of its width.
QPen rulePen(const QColor& color) {
    QPen pen(color, ruleWidth, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setDashPattern({5 / ruleWidth, 3 / ruleWidth});
    pen.setMiterLimit(10);
    return pen;
}

/// The text at the limit's rule, with a plate of the background behind its letters alone, so that the rule and as much
/// of the charge line as possible stay in sight.
class RuleText final : public QCPItemText {
public:
    explicit RuleText(QCustomPlot* plot) : QCPItemText(plot) {}

    QColor plate;

protected:
    void draw(QCPPainter* painter) override {
        const QFontMetricsF metrics(font());
        const QPointF corner = bottomRight->pixelPosition() - QPointF(0, annotationSpacing + metrics.descent());
        const double width = metrics.horizontalAdvance(text()) + annotationPlate;
        const double height = metrics.capHeight() + 2;
        painter->fillRect(QRectF(corner.x() - width, corner.y() + 1 - height, width, height), plate);
        QCPItemText::draw(painter);
    }
};

} // namespace

/// Draws with QCustomPlot; in a plugin of its own.
class CustomHistoryPlot final : public HistoryPlot {
public:
    explicit CustomHistoryPlot(QWidget* parent);

    void setContent(const HistoryChart::Content& content) override;
    QRectF area() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QCustomPlot* plot_;
    QCPGraph* graph_;
    QCPItemStraightLine* rule_;
    RuleText* ruleText_;
    std::array<QCPItemText*, markedPercents.size()> percentLabels_{};
    HistoryChart::Content content_; ///< without the points

    void styleAxes(const HistoryChart::Content& content);
    void markTimes(const HistoryChart::Content& content, double room); ///< `room`: for the line, in pixels
    void showRule(const HistoryChart::Content& content);
    void showPoints(const HistoryChart::Content& content);
};

CustomHistoryPlot::CustomHistoryPlot(QWidget* parent) : HistoryPlot(parent), plot_(new QCustomPlot(this)) {
    plot_->setObjectName(QStringLiteral("historyChartPlot"));
    plot_->setFocusPolicy(Qt::NoFocus);
    for (QWidget* widget : {static_cast<QWidget*>(this), static_cast<QWidget*>(plot_)})
        widget->setAttribute(Qt::WA_TransparentForMouseEvents); // they are for the chart
    plot_->setPlottingHint(QCP::phFastPolylines); // otherwise drawing a week takes as long as the rest of the popover
    auto percents = QSharedPointer<QCPAxisTickerText>::create();
    for (const int percent : markedPercents)
        percents->addTick(percent, QString());
    plot_->yAxis2->setTicker(percents);
    plot_->yAxis2->setRange(0, 100);
    plot_->yAxis2->setVisible(true);
    plot_->yAxis2->setTickLabels(false);
    plot_->yAxis->setVisible(false);
    plot_->yAxis->grid()->setVisible(false);
    plot_->yAxis2->grid()->setVisible(true);
    plot_->yAxis2->grid()->setZeroLinePen(Qt::NoPen);
    // Days are marked where they begin, and named in their middle; one axis does one of these.
    plot_->xAxis->grid()->setVisible(false);
    plot_->xAxis2->setVisible(true);
    plot_->xAxis2->setTickLabels(false);
    plot_->xAxis2->grid()->setVisible(true);
    for (QCPAxis* axis : {plot_->xAxis, plot_->xAxis2, plot_->yAxis2}) {
        axis->setBasePen(Qt::NoPen);
        axis->setTickPen(Qt::NoPen);
        axis->setSubTickPen(Qt::NoPen);
        axis->setTickLabelPadding(labelGap);
        axis->setPadding(0);
        axis->setTickLength(0, 0);
    }
    // QCustomPlot draws in the order of creation: the rule's text, on its plate, is over the charge line.
    graph_ = plot_->addGraph(plot_->xAxis, plot_->yAxis2);
    graph_->setLineStyle(QCPGraph::lsLine);
    rule_ = new QCPItemStraightLine(plot_);
    rule_->setObjectName(QStringLiteral("limitRule"));
    for (QCPItemPosition* end : {rule_->point1, rule_->point2}) {
        end->setAxes(plot_->xAxis, plot_->yAxis2);
        end->setTypeX(QCPItemPosition::ptAxisRectRatio);
        end->setTypeY(QCPItemPosition::ptPlotCoords);
    }
    ruleText_ = new RuleText(plot_);
    ruleText_->setObjectName(QStringLiteral("limitAnnotation"));
    ruleText_->setClipToAxisRect(false);
    ruleText_->setPositionAlignment(Qt::AlignRight | Qt::AlignBottom);
    ruleText_->setPadding({annotationPlate, 0, 0, annotationSpacing});
    ruleText_->setPen(Qt::NoPen);
    ruleText_->position->setAxes(plot_->xAxis, plot_->yAxis2);
    ruleText_->position->setTypeX(QCPItemPosition::ptAxisRectRatio);
    ruleText_->position->setTypeY(QCPItemPosition::ptPlotCoords);
    for (std::size_t i = 0; i < markedPercents.size(); ++i) {
        QCPItemText* label = percentLabels_[i] = new QCPItemText(plot_);
        label->setObjectName(QStringLiteral("percentLabel"));
        label->setText(percentLabel(markedPercents[i]));
        label->setClipToAxisRect(false);
        label->setPositionAlignment(Qt::AlignRight | Qt::AlignVCenter);
        label->position->setAxes(plot_->xAxis, plot_->yAxis2);
        label->position->setTypeX(QCPItemPosition::ptAbsolute);
        label->position->setTypeY(QCPItemPosition::ptPlotCoords);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(plot_);
}

void CustomHistoryPlot::setContent(const HistoryChart::Content& content) {
    content_ = content;
    content_.points.clear();
    styleAxes(content);
    showRule(content);
    showPoints(content);
    plot_->replot(QCustomPlot::rpQueuedReplot);
}

void CustomHistoryPlot::styleAxes(const HistoryChart::Content& content) {
    plot_->setBackground(palette().color(QPalette::Window));
    const QFont font = axisFont();
    for (QCPAxis* axis : {plot_->xAxis, plot_->xAxis2, plot_->yAxis2}) {
        axis->setTickLabelFont(font);
        axis->setTickLabelColor(content.secondary);
        axis->grid()->setPen(QPen(faint(content.secondary, axis == plot_->yAxis2 ? 90 : 45), hairline));
        if (axis != plot_->yAxis2)
            axis->setRange(seconds(content.since), seconds(content.now));
    }
    // Room above for half of the text at 100 %, and for the text of a limit that is close to it.
    const QFontMetrics metrics(font);
    const int below = metrics.height() + labelGap;
    const int half = metrics.height() / 2 + 1;
    const double plain = height() - below - half;
    const double ofLimit = QFontMetrics(annotationFont()).height() + annotationSpacing + 2 -
                           plain * (100 - static_cast<double>(content.limit.value_or(0))) / 100;
    const int beside = metrics.horizontalAdvance(percentLabel(markedPercents.back())) + percentGap;
    plot_->axisRect()->setAutoMargins(QCP::msNone);
    plot_->axisRect()->setMargins({0, std::max(half, static_cast<int>(std::ceil(ofLimit))), beside, below});
    for (std::size_t i = 0; i < markedPercents.size(); ++i) {
        percentLabels_[i]->setFont(font);
        percentLabels_[i]->setColor(content.secondary);
        percentLabels_[i]->position->setCoords(width(), markedPercents[i]);
    }
    markTimes(content, width() - beside);
}

void CustomHistoryPlot::markTimes(const HistoryChart::Content& content, double room) {
    auto lines = QSharedPointer<QCPAxisTickerText>::create();
    auto names = QSharedPointer<QCPAxisTickerText>::create();
    const QFontMetrics metrics(axisFont());
    const double since = seconds(content.since);
    const double now = seconds(content.now);
    const auto add = [&](double from, double until, const QString& name) {
        const double middle = ((from + until) / 2 - since) / (now - since) * room;
        const double half = metrics.horizontalAdvance(name) / 2.0;
        const bool isDay = until > from;
        if (middle >= half && middle <= width() - half && (!isDay || (until - from) / (now - since) * room >= 2 * half))
            names->addTick((from + until) / 2, name); // else it would be cut off, or run into its neighbour
    };
    for (std::size_t i = 0; i < content.marks.size(); ++i) {
        const Date mark = content.marks[i];
        lines->addTick(seconds(mark), QString());
        const double next = i + 1 < content.marks.size() ? seconds(content.marks[i + 1]) : now;
        if (content.days == 1)
            add(seconds(mark), seconds(mark), shortTime(mark));
        else
            add(seconds(mark), next, weekdayText(mark));
    }
    if (content.days != 1 && !content.marks.empty())
        add(since, seconds(content.marks.front()), weekdayText(content.since));
    plot_->xAxis->setTicker(names);
    plot_->xAxis2->setTicker(lines);
}

void CustomHistoryPlot::resizeEvent(QResizeEvent* event) {
    HistoryPlot::resizeEvent(event);
    if (content_.days > 0)
        styleAxes(content_);
}

QRectF CustomHistoryPlot::area() const {
    return plot_->axisRect()->rect();
}

void CustomHistoryPlot::showRule(const HistoryChart::Content& content) {
    const bool isInside = content.limit && *content.limit >= 0 && *content.limit <= 100;
    rule_->setVisible(isInside);
    ruleText_->setVisible(isInside);
    if (!isInside)
        return;
    const auto limit = static_cast<double>(*content.limit);
    rule_->setPen(rulePen(content.rule));
    rule_->point1->setCoords(0, limit);
    rule_->point2->setCoords(1, limit);
    ruleText_->setText(QString::fromStdString(limitText(*content.limit)));
    ruleText_->setFont(annotationFont());
    ruleText_->setColor(content.ruleText);
    ruleText_->plate = palette().color(QPalette::Window);
    ruleText_->position->setCoords(1, limit);
}

void CustomHistoryPlot::showPoints(const HistoryChart::Content& content) {
    QVector<QCPGraphData> line;
    std::int64_t segment = 0;
    for (const Point& point : content.points) {
        if (point.seg != segment) // NaN ends a line
            line.append({seconds(point.date), std::numeric_limits<double>::quiet_NaN()});
        segment = point.seg;
        line.append({seconds(point.date), static_cast<double>(point.pct)});
    }
    graph_->setPen(QPen(content.line, lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    graph_->data()->set(line, true);
}

HistoryPlot* makeHistoryPlot(QWidget* parent) {
    return new CustomHistoryPlot(parent);
}
