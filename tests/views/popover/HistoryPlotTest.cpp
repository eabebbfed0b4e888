// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/HistoryPlot.h"

#include <QImage>
#include <QPixmap>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

Date at(double seconds) {
    return Date(Duration(seconds));
}

struct HistoryPlotTest : ::testing::Test {
    HistoryPlot plot{nullptr};
    QImage picture;

    void show(std::vector<Point> points) {
        plot.resize(308, 110);
        HistoryChart::Content content;
        content.points = std::move(points);
        content.since = at(0);
        content.now = at(9000);
        content.line = Qt::red;
        plot.setContent(content);
        picture = plot.grab().toImage();
    }
    bool isLineAt(double seconds, double percent) const {
        const QPointF middle = plot.place(at(seconds), percent);
        const QColor color = picture.pixelColor(static_cast<int>(middle.x()), static_cast<int>(middle.y()));
        return color.red() > 200 && color.green() < 100;
    }
};

TEST_F(HistoryPlotTest, DrawsALevelChargeFromItsFirstToItsLastPointButNotOverGaps) {
    show({{.date = at(1000), .pct = 80},
          {.date = at(1500), .pct = 80},
          {.date = at(2000), .pct = 80},
          {.date = at(3000), .pct = 80},
          {.date = at(5000), .pct = 80, .seg = 1},
          {.date = at(6000), .pct = 80, .seg = 1},
          {.date = at(6500), .pct = 80, .seg = 1},
          {.date = at(8000), .pct = 40, .seg = 1}});
    for (const double seconds : {1050, 1250, 1750, 2500, 2950, 5050, 5500, 6250})
        EXPECT_TRUE(isLineAt(seconds, 80)) << seconds;
    for (const double seconds : {500, 3500, 4500, 7000})
        EXPECT_FALSE(isLineAt(seconds, 80)) << seconds;
    EXPECT_TRUE(isLineAt(7250, 60));
}

TEST_F(HistoryPlotTest, DrawsAllOfALevelChargeDuringWhichTheClockWasSetBack) {
    show({{.date = at(3000), .pct = 80},
          {.date = at(6000), .pct = 80},
          {.date = at(1000), .pct = 80},
          {.date = at(4000), .pct = 80}});
    for (const double seconds : {1500, 3500, 5500})
        EXPECT_TRUE(isLineAt(seconds, 80)) << seconds;
}

} // namespace
