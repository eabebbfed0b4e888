// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/HistoryChart.h"

#include "views/HistoryPlot.h"
#include "views/ViewStyle.h"

#include <QCoreApplication>
#include <QFile>
#include <QLabel>
#include <QLibrary>
#include <QStackedLayout>

namespace {

/// Beside the executable, wherever the bundle was put; null when it is not there, or is for another version: one that
/// took the place of ours while we ran.
HistoryPlot* loadPlot(QWidget* parent) {
    if (QFile::symLinkTarget(QStringLiteral("/proc/self/exe")).endsWith(QLatin1String(" (deleted)")))
        return nullptr;
    QLibrary module(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/velmora/velmora-chart.so"));
    const auto make = reinterpret_cast<decltype(&makeHistoryPlot)>(module.resolve("makeHistoryPlot"));
    return make != nullptr ? make(parent) : nullptr;
}

} // namespace

HistoryChart::HistoryChart(QWidget* parent)
    : QWidget(parent)
    , layers_(new QStackedLayout(this))
    , empty_(new QLabel(QStringLiteral("Collecting history… a graph appears after a few minutes."), this)) {
    setObjectName(QStringLiteral("historyChart"));
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
    if (!hasLine || plot_ == nullptr) { // half a bundle has no plot; everything else in it can be used
        layers_->setCurrentWidget(empty_);
        setAccessibleName(empty_->text());
        return;
    }
    plot_->setContent(content);
    layers_->setCurrentWidget(plot_);
    setAccessibleName(QString::fromStdString(chartDescription(content.points, content.days)));
}
