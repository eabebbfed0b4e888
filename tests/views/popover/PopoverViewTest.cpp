// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/PopoverView.h"

#include "alerts/Prefs.h"
#include "support/PopoverScene.h"
#include "views/popover/HistoryPlot.h"
#include "views/popover/Popover.h"
#include "views/style/ViewStyle.h"
#include "views/text/ChartPoints.h"
#include "views/text/TimeText.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QLayout>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextLayout>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

struct PopoverViewTest : ::testing::Test {
    PopoverScene scene;
    int quits = 0;
    int settings = 0;
    std::unique_ptr<PopoverView> view;

    PopoverView& shown() {
        if (!view) {
            view = std::make_unique<PopoverView>(
                scene.started(), scene.fake.platform(), [this] { ++settings; }, [this] { ++quits; });
            view->setFixedWidth(340);
            view->rebuild();
            view->show();
        }
        return *view;
    }
    template <class Widget = QWidget>
    Widget* find(const char* name) {
        return shown().findChild<Widget*>(QLatin1String(name));
    }
    /// Whether the widget is visible.
    bool sees(const char* name) {
        const auto* widget = find(name);
        return widget != nullptr && widget->isVisible();
    }
    /// The text of a visible label.
    std::optional<std::string> text(const char* name) {
        if (!sees(name))
            return std::nullopt;
        return find<QLabel>(name)->text().toStdString();
    }
    QColor colorOf(const char* name) { return find(name)->palette().color(QPalette::WindowText); }
    QColor tint(Tint tint, Use use = Use::text) { return tintColor(tint, shown().palette(), use); }

    /// The visible labels with their values, from the top.
    std::vector<std::string> details() {
        std::vector<std::string> rows;
        for (const auto* row : shown().findChildren<QWidget*>(QStringLiteral("detailRow"))) {
            if (row->isVisible())
                rows.push_back(row->accessibleName().toStdString());
        }
        return rows;
    }
    void settle() {
        QCoreApplication::processEvents();
        scene.fake.mainLoop.runDue();
        QCoreApplication::processEvents();
    }
    HistoryPlot* plot() { return find<HistoryPlot>("historyChartPlot"); }
    const HistoryChart::Content& charted() { return plot()->content(); }
    QImage chartPicture() { return plot()->grab().toImage(); }
};

} // namespace

TEST_F(PopoverViewTest, ShowsThreeLinesWithoutABattery) {
    scene.fake.powerSources.sources = std::vector<std::optional<Value>>();
    EXPECT_EQ(text("noBatteryTitle"), "No battery found");
    EXPECT_EQ(text("noBatteryNote"), "This Mac does not report a battery, so Velmora stays quiet.");
    EXPECT_TRUE(sees("noBatterySymbol"));
    const QImage symbol = find<QLabel>("noBatterySymbol")->pixmap().toImage();
    EXPECT_EQ(symbol.size(), QSize(44, 44));
    int drawn = 0;
    for (int x = 0; x < symbol.width(); ++x)
        drawn += symbol.pixelColor(x, 18) == tint(Tint::secondary);
    EXPECT_GT(drawn, 1) << "it is drawn, from the bundle's own glyphs";
    for (const char* name : {"ring", "cycles", "rangePicker", "historyChart", "dailySummary", "detailRow"})
        EXPECT_FALSE(sees(name)) << name;
    EXPECT_EQ(text("note"), "Velmora can only remind you. A Mac app cannot stop the charger.");
    EXPECT_TRUE(sees("settingsButton"));
    EXPECT_TRUE(sees("quitButton"));
}

TEST_F(PopoverViewTest, ShowsWhatTheBatteryDoes) {
    scene.battery(64, true, true, 45);
    EXPECT_EQ(text("stateText"), "Charging, 45 min to full");
    EXPECT_EQ(find("ring")->accessibleName(), QStringLiteral("64 %, charging"));
    EXPECT_FALSE(sees("noBattery"));
    EXPECT_EQ(find("ring")->size(), QSize(104, 104));
}

TEST_F(PopoverViewTest, EndsNoLineOfTheNoteWithALetter) {
    shown();
    settle();
    const auto* note = find<QLabel>("note");
    const QFontMetrics metrics(note->font());
    const auto height = [&](int width) {
        return metrics.boundingRect(QRect(0, 0, width, 1000), Qt::TextWordWrap, note->text()).height();
    };
    const int width = metrics.horizontalAdvance(note->text());
    int withTwoLines = 0;
    for (int room = width / 2; room < width; ++room) {
        const int balanced = balancedWidth(note->text(), note->font(), room);
        EXPECT_LE(balanced, room);
        ASSERT_EQ(height(balanced), height(room));
        if (height(room) > 5 * metrics.height() / 2 || room < width * 6 / 10)
            continue; // there is no room to do it better
        QTextLayout layout(note->text(), note->font());
        layout.beginLayout();
        QTextLine line = layout.createLine();
        line.setLineWidth(balanced);
        EXPECT_FALSE(note->text().left(line.textLength()).endsWith(QStringLiteral(" A "))) << room;
        ++withTwoLines;
        layout.endLayout();
    }
    EXPECT_GT(withTwoLines, 50);
}

TEST_F(PopoverViewTest, LeavesNoWordOfTheStateAlone) {
    scene.battery(64, true, true);
    ASSERT_EQ(text("stateText"), "Charging, estimating time to full…");
    settle();
    auto* label = find<QLabel>("stateText");
    const QFontMetrics metrics(label->font());
    ASSERT_EQ(label->heightForWidth(label->width()), metrics.height() + metrics.lineSpacing());
    const auto longestLine = [label] {
        const QImage picture = label->grab().toImage();
        for (int x = picture.width() - 1; x > 0; --x)
            for (int y = 0; y < picture.height(); ++y)
                if (picture.pixel(x, y) != picture.pixel(0, 0))
                    return x + 1;
        return 0;
    };
    const auto wholeText = [&] { return metrics.horizontalAdvance(label->text()); };
    EXPECT_LE(longestLine(), wholeText() * 7 / 10) << "two lines that are about equally long";
    EXPECT_GE(longestLine(), wholeText() / 2 - 5);
    scene.battery(64, true, true, 45);
    scene.started().refresh(AppModel::Reason::event);
    settle();
    EXPECT_NEAR(longestLine(), wholeText(), 4) << "one line";
}

TEST_F(PopoverViewTest, TellsHowLongItHasBeenPluggedIn) {
    scene.fake.files.files.clear();
    shown();
    scene.fake.mainLoop.advance(2h + 5min);
    EXPECT_EQ(text("pluggedInText"), "Plugged in for 2 h 5 min");
    scene.battery(64, false, false);
    scene.fake.mainLoop.advance(1min);
    EXPECT_EQ(text("pluggedInText"), std::nullopt);
}

TEST_F(PopoverViewTest, NamesNoTimeForASnoozeBeyondAnyCalendar) {
    scene.fake.defaults.setObject("snoozeUntil", 1e18);
    shown();
    EXPECT_EQ(text("snoozeText"), "Alerts snoozed");
}

TEST_F(PopoverViewTest, TellsTheSnoozeAndCancelsItAtOnce) {
    EXPECT_FALSE((shown(), sees("snooze")));
    scene.started().snooze();
    settle();
    const Date until = scene.fake.clock.now() + 1h;
    EXPECT_EQ(text("snoozeText"), "Alerts snoozed until " + shortTime(until).toStdString());
    EXPECT_EQ(find<QAbstractButton>("cancelSnooze")->text(), QStringLiteral("Cancel"));
    find<QAbstractButton>("cancelSnooze")->click();
    settle();
    EXPECT_FALSE(sees("snooze"));
    EXPECT_EQ(Prefs::snoozeUntil(scene.fake.defaults, scene.fake.clock), std::nullopt);
}

TEST_F(PopoverViewTest, CancelStandsCloseToTheSnoozeWhoseLineIsNotBroken) {
    scene.started().snooze();
    settle();
    const QFont usual = QApplication::font();
    for (const double times : {0.6, 1.0, 1.1, 1.25, 1.4}) {
        QFont font = usual;
        font.setPointSizeF(usual.pointSizeF() * times);
        QApplication::setFont(font);
        shown();
        settle();
        const auto box = [this](const char* name) {
            return QRect(find(name)->mapTo(&shown(), QPoint()), find(name)->size());
        };
        const QRect words = box("snoozeText");
        const QRect cancel = box("cancelSnooze");
        EXPECT_LT(words.height(), 2 * find("snoozeText")->fontMetrics().height()) << times << ": one line";
        if (cancel.top() < words.bottom()) {
            EXPECT_EQ(cancel.left() - words.right() - 1, 4) << times;
        } else {
            EXPECT_EQ(cancel.left(), words.left()) << times;
            EXPECT_EQ(cancel.top() - words.bottom() - 1, 4) << times;
        }
        EXPECT_LE(cancel.right(), 340 - 16);
    }
    QApplication::setFont(usual);
}

TEST_F(PopoverViewTest, ShowsTheCycleCountAsAGauge) {
    for (const auto& [cycles, value, words, tinted] :
         std::vector<std::tuple<int, int, const char*, Tint>>{{650, 650, "650 of 1000", Tint::accent},
                                                              {750, 750, "750 of 1000", Tint::orange},
                                                              {1200, 1000, "1200 of 1000", Tint::red}}) {
        scene.registry(cycles, 4600);
        shown();
        scene.started().refresh(AppModel::Reason::event);
        settle();
        EXPECT_EQ(text("cycleLabel"), "Cycle count");
        EXPECT_EQ(text("cycleValue"), words);
        EXPECT_EQ(find<QProgressBar>("cycleBar")->value(), value);
        EXPECT_EQ(find<QProgressBar>("cycleBar")->maximum(), 1000);
        const QImage bar = find("cycleBar")->grab().toImage();
        EXPECT_EQ(bar.pixelColor(bar.width() / 4, bar.height() / 2),
                  tintColorOn(trackColor(shown().palette()), tinted, shown().palette(), Use::graphics))
            << cycles;
    }
}

TEST_F(PopoverViewTest, ShowsNoGaugeWhereCyclesAreNotCounted) {
    scene.fake.powerSources.registry = Value(Dictionary{});
    EXPECT_FALSE((shown(), sees("cycles")));
    EXPECT_TRUE(details().empty());
}

TEST_F(PopoverViewTest, ShowsTheDetailsInOrderEachReadAsOne) {
    EXPECT_EQ((shown(), details()), (std::vector<std::string>{"Battery health: 92% · Good", "Temperature: 31.2 °C",
                                                              "Power out: 7.6 W", "Adapter: 65 W"}));
    scene.battery(80, false, false);
    scene.registry(312, 4600, 0);
    scene.started().refresh(AppModel::Reason::event);
    settle();
    EXPECT_EQ(details(), (std::vector<std::string>{"Battery health: 92% · Good", "Temperature: 31.2 °C"}));
}

TEST_F(PopoverViewTest, ColoursTheHealth) {
    for (const auto& [full, tinted] : std::vector<std::pair<int, Tint>>{
             {4600, Tint::green}, {4500, Tint::orange}, {4000, Tint::orange}, {3995, Tint::red}}) {
        scene.registry(312, full);
        shown();
        scene.started().refresh(AppModel::Reason::event);
        settle();
        EXPECT_EQ(colorOf("detailValue"), tint(tinted)) << full;
    }
    EXPECT_EQ(colorOf("detailLabel"), tint(Tint::primary));
}

TEST_F(PopoverViewTest, ColoursTheRing) {
    const auto arc = [this] {
        const QImage ring = find("ring")->grab().toImage();
        return ring.pixelColor(ring.width() / 2 + 4, 6); // just right of the top, where the arc begins
    };
    scene.battery(20, false, false);
    EXPECT_EQ((shown(), arc()), tint(Tint::red, Use::graphics));
    for (const auto& [percent, plugged, charging, tinted] :
         std::vector<std::tuple<int, bool, bool, Tint>>{{21, false, false, Tint::accent},
                                                        {50, true, true, Tint::green},
                                                        {100, true, false, Tint::green},
                                                        {50, true, false, Tint::accent}}) {
        scene.battery(percent, plugged, charging);
        scene.started().refresh(AppModel::Reason::event);
        settle();
        EXPECT_EQ(arc(), tint(tinted, Use::graphics)) << percent;
    }
}

TEST_F(PopoverViewTest, SaysThatTheHistoryIsBeingCollected) {
    scene.fake.files.files.clear();
    EXPECT_EQ((shown(), text("historyChartEmpty")), "Collecting history… a graph appears after a few minutes.");
    EXPECT_EQ(plot(), nullptr);
    EXPECT_EQ(find("historyChartEmpty")->font(), textFont(TextStyle::caption));
    EXPECT_EQ(colorOf("historyChartEmpty"), tint(Tint::secondary));
    EXPECT_EQ(find<QLabel>("historyChartEmpty")->alignment(), Qt::AlignCenter);
    EXPECT_EQ(find("historyChartEmpty")->size(), find("historyChart")->size());
    EXPECT_TRUE(sees("dailySummary")) << "one sample is a day already";
    scene.fake.mainLoop.advance(1min);
    settle();
    EXPECT_FALSE(sees("historyChartEmpty"));
    EXPECT_TRUE(plot()->isVisible());
}

TEST_F(PopoverViewTest, TheChartShowsExactlyTheWindowThatIsPicked) {
    shown();
    const Date now = scene.fake.clock.now();
    EXPECT_EQ(charted().since, now - 24h);
    EXPECT_EQ(charted().now, now);
    const QRectF area = plot()->area();
    EXPECT_EQ(plot()->place(now - 24h, 100), area.topLeft());
    EXPECT_EQ(plot()->place(now, 0), area.bottomRight());
    EXPECT_EQ(plot()->place(now - 12h, 50), area.center());
    EXPECT_EQ(find("historyChart")->height(), 110);
    const auto choices = find("rangePicker")->findChildren<QAbstractButton*>();
    ASSERT_EQ(choices.size(), 2);
    EXPECT_EQ(choices.at(0)->text(), QStringLiteral("24 hours"));
    EXPECT_EQ(choices.at(1)->text(), QStringLiteral("7 days"));
    EXPECT_TRUE(choices.at(0)->isChecked());
    choices.at(1)->click();
    EXPECT_EQ(charted().since, now - 7 * 24h);
    EXPECT_TRUE(
        find("historyChart")->accessibleName().startsWith(QStringLiteral("Charge of the last 7 days, lowest ")));
}

TEST_F(PopoverViewTest, TheChartIsMarkedAtNothingHalfAndAllOfTheCharge) {
    scene.fake.defaults.setObject("limitEnabled", Value(false));
    shown();
    const QImage picture = chartPicture();
    const QColor background = picture.pixelColor(0, 0);
    const QRectF area = plot()->area();
    const auto isLine = [&](int y) { // also where the charge line crosses it
        int count = 0;
        for (int x = 0; x < static_cast<int>(area.right()); ++x)
            count += picture.pixelColor(x, y) != background ? 1 : 0;
        return count >= static_cast<int>(area.right());
    };
    std::vector<double> lines;
    for (int y = 0; y < picture.height(); ++y) {
        if (isLine(y))
            lines.push_back(y);
    }
    ASSERT_EQ(lines.size(), 3U);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const double place = plot()->place(scene.fake.clock.now(), 100 - 50.0 * static_cast<double>(i)).y();
        EXPECT_NEAR(lines[i], place, 1) << i;
        int drawn = 0; // of the text beside it
        for (int x = static_cast<int>(area.right()) + 2; x < picture.width(); ++x)
            drawn += picture.pixelColor(x, static_cast<int>(place)) != background ? 1 : 0;
        EXPECT_GT(drawn, 2) << i;
        const auto isBlank = [&](int x) { // where the text is
            for (int y = static_cast<int>(place) - 3; y < static_cast<int>(place) + 3; ++y)
                if (picture.pixelColor(x, y) != background)
                    return false;
            return true;
        };
        int end = picture.width();
        while (end > 0 && isBlank(end - 1))
            --end;
        EXPECT_NEAR(end, picture.width(), 2) << "all end at one edge: " << i;
    }
}

TEST_F(PopoverViewTest, TheChartDrawsThePointsAndNoLineOverAGap) {
    scene.fake.defaults.setObject("limitEnabled", Value(false));
    shown();
    const std::vector<Point> expected = points(scene.started().history, scene.fake.clock.now() - 24h);
    ASSERT_EQ(charted().points.size(), expected.size());
    const QImage picture = chartPicture();
    const QColor line = tint(Tint::accent, Use::graphics);
    EXPECT_EQ(charted().line, line);
    const QColor background = picture.pixelColor(0, 0);
    const auto difference = [](const QColor& one, const QColor& other) {
        return std::abs(one.red() - other.red()) + std::abs(one.green() - other.green()) +
               std::abs(one.blue() - other.blue());
    };
    const auto isDrawnAround = [&](QPointF place) {
        const QRect around = QRect(-2, -2, 5, 5).translated(place.toPoint()) & picture.rect();
        for (int y = around.top(); y <= around.bottom(); ++y) {
            for (int x = around.left(); x <= around.right(); ++x) {
                const QColor color = picture.pixelColor(x, y);
                if (difference(color, line) < difference(color, background))
                    return true;
            }
        }
        return false;
    };
    int gaps = 0;
    for (std::size_t i = 1; i < expected.size(); ++i) {
        EXPECT_EQ(charted().points[i].pct, expected[i].pct);
        const auto place = [&](const Point& point) {
            return plot()->place(point.date, static_cast<double>(point.pct));
        };
        const bool isGap = expected[i].seg != expected[i - 1].seg;
        gaps += isGap ? 1 : 0;
        EXPECT_EQ(isDrawnAround((place(expected[i - 1]) + place(expected[i])) / 2), !isGap) << i;
    }
    EXPECT_EQ(gaps, 1) << "the night";
}

TEST_F(PopoverViewTest, TheChartMarksTheLimitAndFollowsThePreference) {
    shown();
    EXPECT_EQ(charted().limit, 80);
    EXPECT_EQ(charted().ruleText, tint(Tint::yellow));
    const QPen pen = plot()->rulePen();
    EXPECT_EQ(pen.color(), tint(Tint::yellow, Use::graphics));
    EXPECT_EQ(pen.widthF(), 1.5);
    EXPECT_EQ(pen.capStyle(), Qt::FlatCap);
    EXPECT_EQ(pen.joinStyle(), Qt::MiterJoin);
    EXPECT_EQ(pen.miterLimit(), 10);
    EXPECT_EQ(pen.dashOffset(), 0);
    ASSERT_EQ(pen.dashPattern().size(), 2) << "counted in widths of the pen";
    EXPECT_DOUBLE_EQ(pen.dashPattern().at(0) * 1.5, 5);
    EXPECT_DOUBLE_EQ(pen.dashPattern().at(1) * 1.5, 3);
    EXPECT_EQ(plot()->ruleText().bottomRight(), plot()->place(scene.fake.clock.now(), 80));
    const auto drawn = [&](const QRectF& place) {
        int count = 0;
        const QImage picture = chartPicture();
        const QRect pixels = place.toRect();
        for (int y = pixels.top(); y < pixels.bottom(); ++y)
            for (int x = pixels.left(); x < pixels.right(); ++x)
                count += picture.pixelColor(x, y) != plot()->palette().color(QPalette::Window) ? 1 : 0;
        return count;
    };
    EXPECT_GT(drawn(plot()->ruleText()), 30) << "its text";
    scene.fake.defaults.setObject("limit", Value(100));
    settle();
    EXPECT_EQ(charted().limit, 100);
    EXPECT_GE(plot()->ruleText().top(), 0) << "whole above the plot";
    const std::size_t points = charted().points.size();
    const QImage marked = chartPicture();
    scene.fake.defaults.setObject("limitEnabled", Value(false));
    settle();
    EXPECT_FALSE(charted().limit);
    EXPECT_TRUE(plot()->ruleText().isEmpty());
    EXPECT_NE(chartPicture(), marked);
    EXPECT_EQ(charted().points.size(), points);
}

TEST_F(PopoverViewTest, TheLimitIsNotCrossedOutByTheLine) {
    scene.battery(92, true, true, 20); // the line leads up to there, through the text
    scene.past(7);
    shown();
    const QImage picture = chartPicture();
    const auto countLine = [&](const QRect& place) {
        int count = 0;
        for (int y = place.top(); y <= place.bottom(); ++y)
            for (int x = place.left(); x <= place.right(); ++x)
                count += picture.pixelColor(x, y) == tint(Tint::accent, Use::graphics) ? 1 : 0;
        return count;
    };
    const QRect text = plot()->ruleText().toRect();
    ASSERT_GT(text.width(), 30);
    EXPECT_EQ(countLine(text.adjusted(1, 1, -2, -2)), 0);
    EXPECT_GT(countLine(text.adjusted(-60, -20, 0, 0) & picture.rect()), 0) << "else this shows nothing";
}

TEST_F(PopoverViewTest, TheChartTellsTheChargeBelowThePointerAndByArrowKeys) {
    Popover popover;
    popover.setContent(&shown());
    PopoverView* content = view.release(); // the popover owns it now
    popover.showAt(std::nullopt);
    QCoreApplication::processEvents();
    auto* chart = content->findChild<QWidget*>(QStringLiteral("historyChart"));
    const auto told = [&] { return chart->property("accessibleValue").toString(); };
    const QImage plain = chart->grab().toImage();
    const std::vector<Point> all = points(scene.started().history, scene.fake.clock.now() - 24h);
    const auto words = [](const Point& point) {
        return weekdayText(point.date) + QLatin1Char(' ') + shortTime(point.date) +
               QStringLiteral(" · %1%").arg(point.pct);
    };
    EXPECT_EQ(told(), QString());
    QTest::mouseMove(chart, {0, 50});
    EXPECT_EQ(told(), words(all.front()));
    EXPECT_NE(chart->grab().toImage(), plain);
    QTest::mouseMove(chart, {chart->width() - 2, 50});
    EXPECT_EQ(told(), words(all.back()));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(chart, &leave);
    EXPECT_EQ(told(), QString());
    EXPECT_EQ(chart->grab().toImage(), plain);
    chart->setFocus();
    QTest::keyClick(chart, Qt::Key_Left);
    EXPECT_EQ(told(), words(all.back()));
    QTest::keyClick(chart, Qt::Key_Left);
    EXPECT_EQ(told(), words(all[all.size() - 2]));
    QTest::keyClick(chart, Qt::Key_Right);
    QTest::keyClick(chart, Qt::Key_Right);
    EXPECT_EQ(told(), words(all.back())) << "there is nothing after it";
    QTest::keyClick(chart, Qt::Key_Home);
    EXPECT_EQ(told(), words(all.front()));
    content->setFocus();
    EXPECT_EQ(told(), QString());
}

TEST_F(PopoverViewTest, TheChartIsOnTheGridAndHasNoVoidAbove) {
    Popover popover;
    popover.setContent(&shown());
    PopoverView* content = view.release(); // the popover owns it now
    popover.showAt(std::nullopt);
    auto* chart = content->findChild<HistoryPlot*>(QStringLiteral("historyChartPlot"));
    const QRectF area = chart->area();
    EXPECT_EQ(area.left(), 0);
    EXPECT_LE(area.top(), 14);
    EXPECT_LE(chart->width() - area.right(), 42) << "the room of 100%";
    const QFont usual = QApplication::font();
    for (const double times : {0.8, 1.0, 1.1, 1.3, 1.6}) { // "100%" is whole in every font
        QFont font = usual;
        font.setPointSizeF(usual.pointSizeF() * times);
        QApplication::setFont(font);
        settle();
        const QImage picture = chart->grab().toImage();
        int drawn = 0;
        for (int y = 0; y < static_cast<int>(chart->area().top()); ++y)
            for (int x = static_cast<int>(chart->area().right()) + 2; x < picture.width(); ++x)
                drawn += picture.pixelColor(x, y) != picture.pixelColor(picture.width() - 1, 0) ? 1 : 0;
        EXPECT_GT(drawn, 0) << times;
    }
    QApplication::setFont(usual);
}

TEST_F(PopoverViewTest, TheChartNamesADayInItsMiddle) {
    Popover popover;
    popover.setContent(&shown());
    PopoverView* content = view.release(); // the popover owns it now
    popover.showAt(std::nullopt);
    content->findChild<QWidget*>(QStringLiteral("rangePicker"))->findChildren<QAbstractButton*>().at(1)->click();
    const auto* chart = content->findChild<HistoryPlot*>(QStringLiteral("historyChartPlot"));
    const std::vector<HistoryPlot::TimeName>& names = chart->timeNames();
    const std::vector<Date>& lines = chart->content().marks;
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_GE(names.size(), 6U);
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        const Date middle = lines[i] + (lines[i + 1] - lines[i]) / 2;
        EXPECT_TRUE(std::ranges::count(names, middle, &HistoryPlot::TimeName::middle)) << i;
    }
}

TEST_F(PopoverViewTest, StandsInOneColumnFromTheRingToTheButtons) {
    scene.started().snooze();
    settle();
    int above = -1;
    for (const char* name : {"ring", "cycleLabel", "cycleBar", "detailRow", "rangePicker", "historyChart",
                             "dailySummary", "note", "settingsButton"}) {
        const int top = find(name)->mapTo(&shown(), QPoint()).y();
        EXPECT_GT(top, above) << name;
        above = top;
    }
    const auto place = [this](const char* name) { return find(name)->mapTo(&shown(), QPoint()); };
    EXPECT_EQ(place("settingsButton").y(), place("quitButton").y());
    EXPECT_LT(place("settingsButton").x(), place("quitButton").x());
    EXPECT_LT(place("stateText").y(), place("pluggedInText").y());
    EXPECT_LT(place("pluggedInText").y(), place("snoozeText").y());
    EXPECT_GT(place("stateText").x(), place("ring").x() + 104);
    EXPECT_GT(place("cancelSnooze").x(), place("snoozeText").x());
    EXPECT_EQ(shown().layout()->spacing(), 14);
    EXPECT_EQ(find("battery")->layout()->spacing(), 14);
}

TEST_F(PopoverViewTest, SaysTheMoreImportantThingsLouder) {
    scene.started().snooze();
    settle();
    for (const auto& [name, style, tinted] :
         std::vector<std::tuple<const char*, TextStyle, Tint>>{{"stateText", TextStyle::headline, Tint::primary},
                                                               {"pluggedInText", TextStyle::caption, Tint::secondary},
                                                               {"snoozeText", TextStyle::caption, Tint::secondary},
                                                               {"cycleLabel", TextStyle::body, Tint::primary},
                                                               {"cycleValue", TextStyle::body, Tint::secondary},
                                                               {"note", TextStyle::caption2, Tint::secondary}}) {
        EXPECT_EQ(find(name)->font(), textFont(style)) << name;
        EXPECT_EQ(colorOf(name), tint(tinted)) << name;
    }
    const auto values = shown().findChildren<QLabel*>(QStringLiteral("detailValue"));
    EXPECT_EQ(values.at(1)->palette().color(QPalette::WindowText), tint(Tint::secondary)) << "the temperature";
    EXPECT_EQ(find("dailySummaryDisclosure")->font(), textFont(TextStyle::callout));
    scene.fake.powerSources.sources = std::vector<std::optional<Value>>();
    scene.started().refresh(AppModel::Reason::event);
    settle();
    EXPECT_EQ(find("noBatteryTitle")->font(), textFont(TextStyle::headline));
    EXPECT_EQ(find("noBatteryNote")->font(), textFont(TextStyle::caption));
    EXPECT_EQ(colorOf("noBatteryNote"), tint(Tint::secondary));
}

TEST_F(PopoverViewTest, TheDailySummaryUnfolds) {
    shown();
    EXPECT_TRUE(sees("dailySummary"));
    EXPECT_FALSE(sees("dailySummaryTable"));
    QSignalSpy resized(&shown(), &PopoverView::resized);
    find<QAbstractButton>("dailySummaryDisclosure")->click();
    EXPECT_EQ(resized.size(), 1);
    EXPECT_EQ(text("dailySummary.0.Day"), "Day");
    EXPECT_EQ(text("dailySummary.0.Charging"), "Charging");
    const auto rows = scene.started().history.dailySummaries(7, scene.fake.clock.now());
    ASSERT_EQ(rows.size(), 7U);
    EXPECT_EQ(text("dailySummary.1.Avg"), std::to_string(rows[0].avgPercent) + "%");
    EXPECT_EQ(text("dailySummary.7.Range"), summaryCells(rows[6]).range);
    EXPECT_EQ(find("dailySummary.1.Avg")->accessibleName(),
              dayText(rows[0].day) + QStringLiteral(", Avg: %1%").arg(rows[0].avgPercent));
    EXPECT_EQ(text("dailySummary.7.Charging"), summaryCells(rows[6]).charging);
    EXPECT_EQ(find("dailySummary.8.Day"), nullptr);
}

TEST_F(PopoverViewTest, TheTableIsMadeWhenItIsUnfoldedForTheFirstTime) {
    shown();
    EXPECT_EQ(find("dailySummary.0.Day"), nullptr);
    auto* disclosure = find<QAbstractButton>("dailySummaryDisclosure");
    disclosure->click();
    disclosure->click();
    scene.fake.mainLoop.advance(24h);
    scene.started().refresh(AppModel::Reason::timer);
    settle();
    disclosure->click();
    EXPECT_EQ(text("dailySummary.1.Day"), dayText(scene.fake.clock.now()).toStdString());
}

TEST_F(PopoverViewTest, TheDailySummaryHasFourColumns) {
    shown();
    find<QAbstractButton>("dailySummaryDisclosure")->click();
    QCoreApplication::processEvents();
    int left = -1;
    for (const auto& [title, width, alignment] :
         std::vector<std::tuple<const char*, int, Qt::Alignment>>{{"Day", 0, Qt::AlignLeading},
                                                                  {"Avg", 38, Qt::AlignTrailing},
                                                                  {"Range", 68, Qt::AlignTrailing},
                                                                  {"Charging", 62, Qt::AlignTrailing}}) {
        const QByteArray header = QByteArray("dailySummary.0.") + title;
        const QByteArray cell = QByteArray("dailySummary.1.") + title;
        EXPECT_EQ(text(header), title);
        EXPECT_EQ(colorOf(header), tint(Tint::secondary));
        EXPECT_EQ(colorOf(cell), shown().palette().color(QPalette::WindowText));
        for (const QByteArray& name : {header, cell}) {
            EXPECT_GE(find(name)->width(), width) << title;
            EXPECT_EQ(find<QLabel>(name)->alignment() & Qt::AlignHorizontal_Mask, alignment) << title;
            EXPECT_EQ(find(name)->x(), find(header)->x()) << title;
        }
        EXPECT_GT(find(header)->x(), left) << title;
        left = find(header)->x();
    }
    EXPECT_EQ(text("dailySummary.1.Day"), dayText(scene.fake.clock.now()).toStdString());
    EXPECT_GT(find("dailySummary.2.Day")->y(), find("dailySummary.1.Day")->y());
}

TEST_F(PopoverViewTest, TheDailySummaryLosesItsRowsWithTheHistory) {
    shown();
    find<QAbstractButton>("dailySummaryDisclosure")->click();
    scene.started().resetHistory();
    settle();
    EXPECT_FALSE(sees("dailySummary"));
    EXPECT_TRUE(sees("historyChartEmpty"));
    scene.fake.mainLoop.advance(1min);
    settle();
    EXPECT_EQ(text("dailySummary.1.Charging"), "–");
    EXPECT_FALSE(sees("dailySummary.2.Day"));
}

TEST_F(PopoverViewTest, HasButtonsThatDoWhatTheySay) {
    shown();
    find<QAbstractButton>("settingsButton")->click();
    find<QAbstractButton>("quitButton")->click();
    EXPECT_EQ(settings, 1);
    EXPECT_EQ(quits, 1);
    EXPECT_EQ(find<QAbstractButton>("settingsButton")->text(), QStringLiteral("Settings…"));
    EXPECT_EQ(find<QAbstractButton>("quitButton")->text(), QStringLiteral("Quit"));
}

TEST_F(PopoverViewTest, FollowsTheModelOnceARefreshWhileItIsShownAndNotAtAllWhileItIsHidden) {
    shown();
    settle();
    int before = shown().rebuilds();
    scene.battery(30, false, false);
    scene.started().refresh(AppModel::Reason::event);
    settle();
    EXPECT_EQ(shown().rebuilds(), before + 1);
    EXPECT_EQ(text("stateText"), "On battery, estimating time left…");
    shown().hide();
    before = shown().rebuilds();
    scene.fake.mainLoop.advance(2h);
    scene.started().snooze();
    scene.fake.defaults.setObject("limit", Value(60));
    settle();
    EXPECT_EQ(shown().rebuilds(), before);
}

TEST_F(PopoverViewTest, FollowsThePaletteWhileItIsShown) {
    shown();
    const QPalette light = QApplication::palette();
    QPalette dark(QColor(45, 45, 48), QColor(42, 42, 44));
    QApplication::setPalette(dark);
    settle();
    EXPECT_EQ(colorOf("detailValue"), tintColor(Tint::green, dark));
    EXPECT_GE(contrast(colorOf("detailValue"), dark.color(QPalette::Window)), 4.5);
    QApplication::setPalette(light);
}

TEST_F(PopoverViewTest, NamesEverythingThatCanBeOperated) {
    for (const auto* button : shown().findChildren<QAbstractButton*>()) {
        EXPECT_FALSE(button->text().isEmpty() && button->accessibleName().isEmpty());
        EXPECT_NE(button->focusPolicy() & Qt::TabFocus, 0) << button->text().toStdString();
    }
}

TEST_F(PopoverViewTest, NothingIsCutOffWithTextTwiceAsLarge) {
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSizeF(usual.pointSizeF() * 2);
    scene.battery(64, true, true, 605);
    Prefs::setSnoozeUntil(scene.fake.defaults, scene.fake.clock.now() + 1h);
    Popover popover;
    popover.setContent(&shown());
    PopoverView* content = view.release(); // the popover owns it now
    QObject::connect(content, &PopoverView::resized, &popover, &Popover::place);
    popover.showAt(std::nullopt);
    content->findChild<QAbstractButton*>(QStringLiteral("dailySummaryDisclosure"))->click();
    QApplication::setFont(large); // while it is open
    settle();
    for (const auto* label : content->findChildren<QLabel*>()) {
        if (!label->isVisible())
            continue;
        const int needed = label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
        EXPECT_GE(label->height(), needed) << label->text().toStdString();
        EXPECT_GE(label->width(), label->minimumSizeHint().width()) << label->text().toStdString();
    }
    popover.grab().save(QStringLiteral(VELMORA_PICTURES "/popover-large-text.png"));
    QApplication::setFont(usual);
}

TEST(ViewStyle, HasFontsInStepsFromTheDesktopsOwn) {
    const auto size = [](TextStyle style) { return textFont(style).pointSizeF(); };
    EXPECT_EQ(size(TextStyle::body), QApplication::font().pointSizeF());
    EXPECT_EQ(size(TextStyle::headline), size(TextStyle::body));
    EXPECT_TRUE(textFont(TextStyle::headline).bold());
    EXPECT_LT(size(TextStyle::callout), size(TextStyle::body));
    EXPECT_LT(size(TextStyle::caption), size(TextStyle::callout));
    EXPECT_LT(size(TextStyle::caption2), size(TextStyle::caption));
}

TEST(ViewStyle, TakesNoWhiteCardWithBlackTextForHighContrast) {
    QPalette palette(QColor(0xef, 0xef, 0xef)); // Qt's own
    palette.setColor(QPalette::Window, Qt::white);
    palette.setColor(QPalette::WindowText, Qt::black);
    EXPECT_LT(contrast(hairlineColor(palette), Qt::white), 2);
    palette.setColor(QPalette::Button, Qt::white);
    EXPECT_EQ(hairlineColor(palette), Qt::black);
}

TEST(ViewStyle, ReadsInEveryColourOnLightAndDark) {
    for (const QColor& window : {QColor(Qt::white), QColor(0xef, 0xef, 0xef), QColor(0x2d, 0x2d, 0x30),
                                 QColor(Qt::black), QColor(0xd0, 0xc8, 0xb0)}) {
        QPalette palette(window);
        for (const Tint tint :
             {Tint::primary, Tint::secondary, Tint::accent, Tint::green, Tint::orange, Tint::red, Tint::yellow}) {
            EXPECT_GE(contrast(tintColor(tint, palette), window), 4.5);
            EXPECT_GE(contrast(tintColor(tint, palette, Use::graphics), window), 3);
        }
    }
}
