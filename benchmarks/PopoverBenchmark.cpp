// SPDX-License-Identifier: GPL-3.0-or-later
// The work of the popover each time that it opens, and each minute while it is open, with a month of history.
#include "MonthOfSamples.h"
#include "history/HistoryFile.h"
#include "support/FakePlatform.h"
#include "support/PopoverScene.h"
#include "views/popover/HistoryChart.h"
#include "views/popover/PopoverView.h"
#include "views/text/ChartPoints.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

constexpr double day = 86'400;

/// A laptop at the end of the month.
struct Month {
    PopoverScene scene;
    Month() {
        scene.fake.clock.setNow(monthEnd());
        scene.fake.files.files["/home/user/.local/share/Velmora/history.json"] = *encodeHistory(monthOfSamples());
    }
};

/// Looks at each sample of the last days once, to compare the chart's points with.
void lookAtSamples(benchmark::State& state) {
    Month month;
    const HistoryStore& history = month.scene.started().history;
    const Date since = monthEnd() - Duration(static_cast<double>(state.range(0)) * day);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(std::ranges::count_if(history.samplesSince(since), &Sample::c));
}
BENCHMARK(lookAtSamples)->Arg(1)->Arg(7)->Unit(benchmark::kMicrosecond);

void chartPoints(benchmark::State& state) {
    Month month;
    const HistoryStore& history = month.scene.started().history;
    const Date since = monthEnd() - Duration(static_cast<double>(state.range(0)) * day);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(points(history, since));
}
BENCHMARK(chartPoints)->Arg(1)->Arg(7)->Unit(benchmark::kMicrosecond);

void dailyTable(benchmark::State& state) {
    Month month;
    const HistoryStore& history = month.scene.started().history;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(history.dailySummaries(7, monthEnd()));
}
BENCHMARK(dailyTable)->Unit(benchmark::kMicrosecond);

/// The popover's content, as it is shown.
struct Shown : Month {
    PopoverView view;
    explicit Shown(int days)
        : view(
              scene.started(), scene.fake.platform(), [] {}, [] {}) {
        if (days == 7)
            view.findChild<QWidget*>(QStringLiteral("rangePicker"))->findChildren<QAbstractButton*>().at(1)->click();
        view.rebuild();
        view.show();
        QCoreApplication::processEvents();
    }
};

void paint(QWidget& widget, QPixmap& target) {
    widget.render(&target);
}

/// QPainter alone: a picture as large as the chart, with one anti-aliased line of as many points and a few texts.
void paintALine(benchmark::State& state) {
    QPixmap target(308, 110);
    QPolygonF line;
    for (int i = 0; i < 300; ++i)
        line << QPointF(i, 50 + 40 * std::sin(i / 20.0));
    for ([[maybe_unused]] auto _ : state) {
        target.fill(Qt::white);
        QPainter painter(&target);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Qt::blue, 1.8));
        painter.drawPolyline(line);
        for (int i = 0; i < 8; ++i)
            painter.drawText(QPoint(i * 35, 108), QStringLiteral("12:00"));
    }
}
BENCHMARK(paintALine)->Unit(benchmark::kMicrosecond);

/// Repaints the chart as it is, and after new values, which make it draw anew.
void repaintChart(benchmark::State& state) {
    Shown shown(static_cast<int>(state.range(0)));
    auto* chart = shown.view.findChild<QWidget*>(QStringLiteral("historyChart"));
    QPixmap target(chart->size());
    for ([[maybe_unused]] auto _ : state)
        paint(*chart, target);
}
BENCHMARK(repaintChart)->Arg(1)->Arg(7)->Unit(benchmark::kMicrosecond);

/// The cost of a change of the battery while the popover is open: all values are set, and all of it is painted.
void rebuildAndPaint(benchmark::State& state) {
    Shown shown(static_cast<int>(state.range(0)));
    QPixmap target(shown.view.size());
    for ([[maybe_unused]] auto _ : state) {
        shown.view.rebuild();
        QCoreApplication::processEvents();
        paint(shown.view, target);
    }
}
BENCHMARK(rebuildAndPaint)->Arg(1)->Arg(7)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
