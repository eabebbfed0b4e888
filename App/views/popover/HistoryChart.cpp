// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/HistoryChart.h"

#include "platform/qt/PluginLoader.h"
#include "views/popover/HistoryPlot.h"
#include "views/style/Accessibility.h"
#include "views/style/KeyboardFocus.h"
#include "views/style/ViewStyle.h"

#include <QLabel>
#include <QPainter>
#include <QStackedLayout>

namespace {

/// Null when the chart plugin cannot be used.
HistoryPlot* loadPlot(QWidget* parent) {
    const auto make = reinterpret_cast<decltype(&makeHistoryPlot)>(pluginFunction("velmora-chart", "makeHistoryPlot"));
    return make != nullptr ? make(parent) : nullptr;
}

/// Around the chart while it has the keyboard focus, over what it draws.
class FocusRing final : public QWidget {
public:
    explicit FocusRing(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        if (!showsFocus(*parentWidget()))
            return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);
    }
};

} // namespace

HistoryChart::HistoryChart(QWidget* parent)
    : QWidget(parent)
    , layers_(new QStackedLayout(this))
    , empty_(new QLabel(QStringLiteral("Collecting history… a graph appears after a few minutes."), this))
    , ring_(new FocusRing(this)) {
    setObjectName(QStringLiteral("historyChart"));
    setFocusPolicy(Qt::TabFocus);
    setAccessibleWhole(*this, QAccessible::Graphic);
    layers_->setContentsMargins(0, 0, 0, 0);
    empty_->setObjectName(QStringLiteral("historyChartEmpty"));
    empty_->setTextFormat(Qt::PlainText);
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setWordWrap(true);
    layers_->addWidget(empty_);
}

void HistoryChart::setContent(const Content& content) {
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, content.secondary);
    empty_->setPalette(colors);
    empty_->setFont(textFont(TextStyle::caption));
    const bool hasLine = content.points.size() >= 2;
    if (hasLine && plot_ == nullptr && (plot_ = loadPlot(this)) != nullptr)
        layers_->addWidget(plot_);
    ring_->raise();
    if (!hasLine || plot_ == nullptr) { // the rest works without the plugin
        layers_->setCurrentWidget(empty_);
        setAccessibleName(empty_->text());
        return;
    }
    plot_->setContent(content);
    layers_->setCurrentWidget(plot_);
    setAccessibleName(QString::fromStdString(chartDescription(content.points, content.days)));
}

void HistoryChart::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    ring_->setGeometry(rect());
}
