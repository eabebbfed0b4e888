// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/HistoryPlot.h"

#include "views/style/ViewStyle.h"
#include "views/text/TimeText.h"

#include <QVBoxLayout>
#include <qcustomplot.h>

#include <limits>

namespace {

constexpr int annotationSize = 9;
constexpr int annotationSpacing = 1;
constexpr int annotationPlate = 3; ///< of background beside the text
constexpr double lineWidth = 1.8;
constexpr double ruleWidth = 1.5;

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

} // namespace

/// Draws with QCustomPlot; in a plugin of its own.
class CustomHistoryPlot final : public HistoryPlot {
public:
    explicit CustomHistoryPlot(QWidget* parent);

    void setContent(const HistoryChart::Content& content) override;

private:
    QCustomPlot* plot_;
    QCPGraph* graph_;
    QCPItemStraightLine* rule_;
    QCPItemText* ruleText_;

    void styleAxes(const HistoryChart::Content& content);
    void showRule(const HistoryChart::Content& content);
    void showPoints(const HistoryChart::Content& content);
};

CustomHistoryPlot::CustomHistoryPlot(QWidget* parent) : HistoryPlot(parent), plot_(new QCustomPlot(this)) {
    plot_->setObjectName(QStringLiteral("historyChartPlot"));
    plot_->setFocusPolicy(Qt::NoFocus);
    plot_->setAttribute(Qt::WA_TransparentForMouseEvents);
    plot_->setPlottingHint(QCP::phFastPolylines); // otherwise drawing a week takes as long as the rest of the popover
    auto percents = QSharedPointer<QCPAxisTickerText>::create();
    for (const int percent : {0, 50, 100})
        percents->addTick(percent, QString::number(percent) + QLatin1Char('%'));
    plot_->yAxis2->setTicker(percents);
    plot_->yAxis2->setRange(0, 100);
    plot_->yAxis2->setVisible(true);
    plot_->yAxis2->setTickLabels(true);
    plot_->yAxis->setVisible(false);
    plot_->yAxis->grid()->setVisible(false);
    plot_->yAxis2->grid()->setVisible(true);
    plot_->yAxis2->grid()->setZeroLinePen(Qt::NoPen);
    for (QCPAxis* axis : {plot_->xAxis, plot_->yAxis2}) {
        axis->setBasePen(Qt::NoPen);
        axis->setTickPen(Qt::NoPen);
        axis->setSubTickPen(Qt::NoPen);
        axis->setTickLabelPadding(3);
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
    ruleText_ = new QCPItemText(plot_);
    ruleText_->setObjectName(QStringLiteral("limitAnnotation"));
    ruleText_->setClipToAxisRect(false);
    ruleText_->setPositionAlignment(Qt::AlignRight | Qt::AlignBottom);
    ruleText_->setPadding({annotationPlate, 0, 0, annotationSpacing});
    ruleText_->setPen(Qt::NoPen);
    ruleText_->position->setAxes(plot_->xAxis, plot_->yAxis2);
    ruleText_->position->setTypeX(QCPItemPosition::ptAxisRectRatio);
    ruleText_->position->setTypeY(QCPItemPosition::ptPlotCoords);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(plot_);
}

void CustomHistoryPlot::setContent(const HistoryChart::Content& content) {
    styleAxes(content);
    showRule(content);
    showPoints(content);
    plot_->replot(QCustomPlot::rpQueuedReplot);
}

void CustomHistoryPlot::styleAxes(const HistoryChart::Content& content) {
    plot_->setBackground(palette().color(QPalette::Window));
    const QFont font = axisFont();
    for (QCPAxis* axis : {plot_->xAxis, plot_->yAxis2}) {
        axis->setTickLabelFont(font);
        axis->setTickLabelColor(content.secondary);
        axis->grid()->setPen(QPen(faint(content.secondary, axis == plot_->yAxis2 ? 90 : 45), 1));
    }
    plot_->xAxis->setRange(seconds(content.since), seconds(content.now));
    auto ticks = QSharedPointer<QCPAxisTickerText>::create();
    for (const Date mark : content.marks)
        ticks->addTick(seconds(mark), content.days == 1 ? shortTime(mark) : weekdayText(mark));
    plot_->xAxis->setTicker(ticks);
    // Room above for the text of a limit at the top, and on the left for half of a mark's text.
    const int above = QFontMetrics(annotationFont()).height() + annotationSpacing + 3;
    plot_->axisRect()->setMinimumMargins({QFontMetrics(font).averageCharWidth() * 2, above, 0, 0});
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
    ruleText_->setBrush(palette().color(QPalette::Window));
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
