// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/Popover.h"

#include "alerts/Prefs.h"
#include "support/FakeDesktopWindows.h"
#include "support/PopoverScene.h"
#include "support/WaitUntil.h"
#include "views/popover/PopoverView.h"
#include "views/style/DesktopPalette.h"
#include "views/style/KeyboardFocus.h"
#include "views/style/ThinScrollBar.h"
#include "views/style/ViewStyle.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCursor>
#include <QLayout>
#include <QScreen>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QWindow>
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <vector>

namespace {

/// Windows can be transparent, until something ends that.
class ShadowDesktop final : public FakeDesktopWindows {
public:
    ShadowDesktop() { hasShadows = true; }

    QRect place; ///< where the popover was told to be shown

    void willShowPopover(QWindow& /*window*/, const QRect& where, int shadow) override {
        place = where;
        EXPECT_EQ(shadow, hasShadows ? 20 : 0);
    }
};

/// Where a widget is whenever its size has changed.
struct GeometryNotes final : QObject {
    std::vector<QRect> geometries;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Resize)
            geometries.push_back(static_cast<QWidget*>(watched)->geometry());
        return false;
    }
};

class PopoverTest : public testing::Test {
protected:
    PopoverScene scene;
    Popover popover;
    const QFont usualFont = QApplication::font();
    PopoverView* content = nullptr;

    ~PopoverTest() override { QApplication::setFont(usualFont); }

    void open() {
        content = new PopoverView(
            scene.started(), scene.fake.platform(), [] {}, [] {});
        popover.setContent(content);
        QObject::connect(content, &PopoverView::resized, &popover, &Popover::place);
        content->rebuild();
        popover.showAt(std::nullopt);
    }
    void unfold() { content->findChild<QAbstractButton*>(QStringLiteral("dailySummaryDisclosure"))->click(); }
    void useFont(double times) {
        QFont large = usualFont;
        large.setPointSizeF(usualFont.pointSizeF() * times);
        QApplication::setFont(large);
        QCoreApplication::processEvents();
        scene.fake.mainLoop.runDue();
        QCoreApplication::processEvents();
    }
    ThinScrollBar& scrollBar() { return *popover.findChild<ThinScrollBar*>(); }
    int available() { return popover.screen()->availableGeometry().height(); }
    /// No visible widget reaches into the margins.
    void expectMargins() {
        EXPECT_EQ(popover.width(), 340);
        EXPECT_EQ(content->width(), 340);
        for (const auto* widget : content->findChildren<QWidget*>()) {
            if (!widget->isVisible())
                continue;
            const int left = widget->mapTo(content, QPoint()).x();
            EXPECT_GE(left, 16) << widget->objectName().toStdString();
            EXPECT_LE(left + widget->width(), 340 - 16) << widget->objectName().toStdString();
        }
    }
};

} // namespace

TEST_F(PopoverTest, IsAsWideAsItsContentAndAsHigh) {
    open();
    EXPECT_EQ(popover.height(), content->layout()->totalHeightForWidth(340));
    EXPECT_LT(popover.height(), available());
    EXPECT_EQ(content->height(), popover.height());
    EXPECT_FALSE(scrollBar().isVisible());
    expectMargins();
}

TEST_F(PopoverTest, IsAtOnceAsHighAsItsContentWhenTheTableIsFolded) {
    open();
    const auto expectNoGap = [this](const char* after) {
        EXPECT_EQ(content->height(), popover.height()) << after;
        const int height = popover.height();
        QCoreApplication::processEvents(); // what is announced by events has arrived
        popover.place();
        EXPECT_EQ(popover.height(), height) << after;
    };
    const int folded = popover.height();
    auto* disclosure = content->findChild<QWidget*>(QStringLiteral("dailySummaryDisclosure"));
    for (int i = 0; i < 2; ++i) {
        unfold();
        EXPECT_GT(popover.height(), folded);
        expectNoGap("unfolding");
        disclosure->setFocus();
        QTest::keyClick(disclosure, Qt::Key_Space);
        EXPECT_EQ(popover.height(), folded);
        expectNoGap("folding");
    }
}

TEST_F(PopoverTest, GrowsAndShrinksInOneStepAboveAPanelAtTheBottom) {
    open();
    const QRect screen = popover.screen()->availableGeometry();
    popover.hide();
    popover.showAt(ScreenPoint{screen.center().x(), screen.bottom() - 10});
    const int bottom = popover.geometry().bottom();
    GeometryNotes notes;
    popover.installEventFilter(&notes);
    unfold();
    unfold();
    ASSERT_EQ(notes.geometries.size(), 2U);
    for (const QRect& geometry : notes.geometries)
        EXPECT_EQ(geometry.bottom(), bottom);
}

TEST_F(PopoverTest, HasALineAroundItThatTakesNoClicks) {
    open();
    const QImage picture = popover.grab().toImage();
    const QColor line = picture.pixelColor(0, 0);
    EXPECT_NE(line, picture.pixelColor(1, 1));
    EXPECT_EQ(picture.pixelColor(picture.width() - 1, picture.height() / 2), line);
    EXPECT_EQ(picture.pixelColor(picture.width() / 2, picture.height() - 1), line);
    auto* button = content->findChild<QAbstractButton*>(QStringLiteral("quitButton"));
    EXPECT_EQ(QApplication::widgetAt(button->mapToGlobal(button->rect().center())), button);
}

TEST_F(PopoverTest, KeepsItsMarginsWithAScrollBarAndTextTwiceAsLarge) {
    Prefs::setSnoozeUntil(scene.fake.defaults, scene.fake.clock.now() + 1h);
    scene.battery(64, true, true, 605);
    open();
    unfold();
    useFont(2);
    EXPECT_EQ(popover.height(), available());
    EXPECT_TRUE(scrollBar().isVisible());
    expectMargins();
    // The handle is in the margin, and visible.
    const QRect bar(scrollBar().mapTo(&popover, QPoint()), scrollBar().size());
    EXPECT_GE(bar.left(), 340 - 16);
    EXPECT_LT(bar.right(), 340 - 1);
    const QImage picture = popover.grab().toImage();
    EXPECT_NE(picture.pixelColor(bar.center().x(), bar.top() + 60), picture.pixelColor(4, bar.top() + 60));
    picture.save(QStringLiteral(VELMORA_PICTURES "/popover-scrolls.png"));
}

TEST_F(PopoverTest, ScrollsByWheelAndByItsBar) {
    open();
    unfold();
    useFont(3);
    ASSERT_TRUE(scrollBar().isVisible());
    auto* view = popover.findChild<QScrollArea*>()->viewport();
    QWheelEvent wheel(QPointF(50, 50), view->mapToGlobal(QPointF(50, 50)), {}, QPoint(0, -240), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(view, &wheel);
    EXPECT_GT(scrollBar().value(), 0);
    EXPECT_LT(content->y(), 0);
    scrollBar().setValue(scrollBar().maximum());
    EXPECT_EQ(content->y() + content->height(), popover.height());
    scrollBar().setValue(0);
    EXPECT_EQ(content->y(), 0);
    // The keyboard focus scrolls, too.
    auto* quit = content->findChild<QWidget*>(QStringLiteral("quitButton"));
    for (int i = 0; i < 20 && !quit->hasFocus(); ++i)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_TRUE(quit->hasFocus());
    EXPECT_TRUE(view->rect().contains(quit->mapTo(view, quit->rect().center())));
    useFont(1);
    unfold();
    EXPECT_FALSE(scrollBar().isVisible());
    EXPECT_EQ(content->y(), 0);
}

TEST_F(PopoverTest, EscapeClosesItWhereverTheKeyboardIs) {
    open();
    QTest::keyClick(&popover, Qt::Key_A);
    EXPECT_TRUE(popover.isVisible());
    QTest::keyClick(&popover, Qt::Key_Escape);
    EXPECT_FALSE(popover.isVisible());
    popover.showAt(std::nullopt);
    auto* quit = content->findChild<QWidget*>(QStringLiteral("quitButton"));
    quit->setFocus();
    QTest::keyClick(quit, Qt::Key_Escape);
    EXPECT_FALSE(popover.isVisible());
}

TEST_F(PopoverTest, EnterPressesTheButtonWithTheFocusAsTheSpaceBarDoes) {
    open();
    for (const char* name : {"settingsButton", "quitButton", "dailySummaryDisclosure"}) {
        auto* button = content->findChild<QAbstractButton*>(QLatin1String(name));
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
            const QSignalSpy clicks(button, &QAbstractButton::clicked);
            button->setFocus();
            QTest::keyClick(button, key);
            EXPECT_EQ(clicks.count(), 1) << name << ' ' << key;
        }
    }
    content->setFocus();
    QTest::keyClick(content, Qt::Key_Return);
    EXPECT_TRUE(popover.isVisible());
}

TEST_F(PopoverTest, RingsWhatHasTheFocusForTheKeyboardAlone) {
    open();
    ASSERT_TRUE(waitUntil([&] { return popover.isActiveWindow(); }));
    QWindow* window = popover.windowHandle();
    QWidget* segment = content->findChild<QWidget*>(QStringLiteral("rangePicker"))->findChild<QAbstractButton*>();
    const auto click = [&](QWidget& widget) {
        QTest::mouseClick(window, Qt::LeftButton, {}, widget.mapTo(&popover, widget.rect().center()));
    };
    const auto picture = [&](QWidget& widget) { return widget.grab().toImage(); };
    const QImage plain = picture(*segment);
    click(*segment);
    ASSERT_TRUE(segment->hasFocus());
    EXPECT_FALSE(showsFocus(*segment)) << "it was clicked";
    EXPECT_EQ(picture(*segment), plain);
    QTest::keyClick(window, Qt::Key_Tab);
    QTest::keyClick(window, Qt::Key_Backtab);
    ASSERT_TRUE(segment->hasFocus());
    EXPECT_TRUE(showsFocus(*segment));
    EXPECT_NE(picture(*segment), plain);
    click(*segment);
    EXPECT_FALSE(showsFocus(*segment)) << "it was clicked again";
    EXPECT_EQ(picture(*segment), plain);
    QTest::keyClick(window, Qt::Key_Tab);
    popover.hide();
    popover.showAt(std::nullopt);
    segment->setFocus();
    EXPECT_FALSE(showsFocus(*segment)) << "it was opened again";
}

TEST_F(PopoverTest, GoesOnToWhatFollowsAfterTheSnoozeIsCancelled) {
    scene.started().snooze();
    open();
    ASSERT_TRUE(waitUntil([&] { return popover.isActiveWindow(); }));
    auto* cancel = content->findChild<QAbstractButton*>(QStringLiteral("cancelSnooze"));
    cancel->setFocus();
    cancel->click();
    scene.fake.mainLoop.runDue();
    ASSERT_FALSE(cancel->isVisible());
    EXPECT_EQ(popover.focusWidget(), content->findChild<QWidget*>(QStringLiteral("cycles")));
    QTest::keyClick(popover.windowHandle(), Qt::Key_Tab);
    EXPECT_EQ(popover.focusWidget()->parentWidget(), content->findChild<QWidget*>(QStringLiteral("rangePicker")));
}

TEST_F(PopoverTest, ClosesWhenTheUserTurnsToAnotherWindow) {
    open();
    ASSERT_TRUE(waitUntil([&] { return popover.isActiveWindow(); }));
    QWidget other;
    other.show();
    other.activateWindow();
    EXPECT_TRUE(waitUntil([&] { return !popover.isVisible(); }));
    EXPECT_TRUE(other.isVisible());
}

TEST_F(PopoverTest, APopupClosesWhenNobodyMovesThePointer) {
    // A popup grabs the pointer and the keyboard, which a screen locker needs.
    popover.setWindowFlags(Qt::Popup);
    open();
    const auto timers = popover.findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_EQ(timers.size(), 1);
    EXPECT_TRUE(timers.first()->isActive());
    EXPECT_EQ(timers.first()->interval(), 120'000);
    const QSignalSpy looks(timers.first(), &QTimer::timeout);
    QCursor::setPos(QCursor::pos() + QPoint(1, 1));
    timers.first()->start(0);
    EXPECT_TRUE(waitUntil([&] { return !popover.isVisible(); }));
    EXPECT_EQ(looks.count(), 2) << "it had been moved before the first";
    EXPECT_FALSE(timers.first()->isActive());
}

TEST_F(PopoverTest, IsACardOfTheDesktopsPaletteAndFollowsIt) {
    open();
    const QPalette usual = QApplication::palette();
    for (const bool isDark : {true, false, true}) {
        QApplication::setPalette(desktopPalette(usual, {.isDark = isDark, .accent = {}, .font = {}}));
        QCoreApplication::processEvents();
        scene.fake.mainLoop.runDue();
        const QColor card = cardColor(QApplication::palette());
        EXPECT_EQ(popover.grab().toImage().pixelColor(8, 8), card) << isDark;
        EXPECT_EQ(content->palette().color(QPalette::Window), card) << isDark;
    }
    QApplication::setPalette(usual);
}

TEST_F(PopoverTest, AnyOtherWindowStays) {
    open();
    for (const auto* timer : popover.findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly))
        EXPECT_FALSE(timer->isActive());
}

TEST_F(PopoverTest, KnowsForAMomentThatItWasClosed) {
    open();
    EXPECT_FALSE(popover.wasJustClosed()) << "it is only just open";
    popover.hide();
    EXPECT_TRUE(popover.wasJustClosed());
    EXPECT_TRUE(waitUntil([&] { return !popover.wasJustClosed(); }, 5s));
}

TEST_F(PopoverTest, ShowsNoScrollBarWhereAllOfItFits) {
    open();
    for (double times = 0.8; times < 1.3; times += 0.02) {
        useFont(times);
        ASSERT_LT(popover.height(), available());
        EXPECT_FALSE(scrollBar().isVisible()) << times << " times the font: " << scrollBar().maximum() << " more than "
                                              << popover.height() << ", content " << content->height();
    }
}

TEST_F(PopoverTest, KeepsOffThePanelsThatTheDesktopKnows) {
    FakeDesktopWindows desktop;
    const QSize screen = QGuiApplication::primaryScreen()->size();
    desktop.free = ScreenRect{0, 0, screen.width(), screen.height() - 50};
    Popover floating(&desktop);
    auto* tall = new QWidget;
    tall->setLayout(new QVBoxLayout);
    tall->layout()->addItem(new QSpacerItem(1, 9999));
    floating.setContent(tall);
    floating.showAt(std::nullopt);
    EXPECT_EQ(floating.geometry().top(), 0);
    EXPECT_EQ(floating.height(), desktop.free->height);
}

TEST_F(PopoverTest, FloatsWithRoundCornersAndAShadowWhereWindowsCanBeTransparent) {
    ShadowDesktop desktop;
    Popover floating(&desktop);
    auto* view = new PopoverView(
        scene.started(), scene.fake.platform(), [] {}, [] {});
    floating.setContent(view);
    view->rebuild();
    floating.showAt(ScreenPoint{400, 4});
    const QRect card(20, 20, 340, view->layout()->totalHeightForWidth(340));
    EXPECT_EQ(floating.size(), card.size() + QSize(40, 40));
    EXPECT_EQ(QRect(view->mapTo(&floating, QPoint()), view->size()), card);
    EXPECT_EQ(desktop.place, card.translated(floating.pos()));
    EXPECT_EQ(desktop.place.center().x() + desktop.place.center().x() % 2, 400);
    EXPECT_EQ(desktop.place.top(), 12) << "8 pixels below the point";

    QImage picture(floating.size(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    floating.render(&picture, {}, {}, QWidget::DrawChildren);
    picture.save(QStringLiteral(VELMORA_PICTURES "/popover-floats.png"));
    const auto opacity = [&](int x, int y) { return picture.pixelColor(x, y).alphaF(); };
    const int middle = card.center().x();
    EXPECT_EQ(picture.pixelColor(card.left() + 5, card.top() + 60), cardColor(QApplication::palette()));
    EXPECT_EQ(opacity(card.left() + 12, card.top() + 1), 1);
    EXPECT_LT(opacity(card.left() + 1, card.top() + 1), 0.5) << "the corner is round";
    EXPECT_EQ(opacity(0, 0), 0);
    EXPECT_LT(opacity(middle, picture.height() - 1), 0.01) << "the shadow ends before the window does";
    EXPECT_LT(opacity(middle, 0), 0.01);
    double before = 0;
    for (int y = picture.height() - 1; y > card.bottom(); --y) {
        EXPECT_GE(opacity(middle, y), before) << "it is darker nearer to the card: " << y;
        before = opacity(middle, y);
    }
    EXPECT_GT(before, opacity(middle, card.top() - 1)) << "it is lower than the card";

    QTest::mouseClick(floating.windowHandle(), Qt::LeftButton, {}, {card.left() + 5, card.top() + 60});
    EXPECT_TRUE(floating.isVisible());
    QTest::mouseClick(floating.windowHandle(), Qt::LeftButton, {}, {5, card.top() + 60});
    EXPECT_FALSE(floating.isVisible()) << "beside the card";

    desktop.hasShadows = false; // the compositing manager has ended
    floating.showAt(ScreenPoint{400, 4});
    EXPECT_EQ(floating.size(), card.size());
    EXPECT_EQ(floating.y(), 12);
    const QImage square = floating.grab().toImage();
    EXPECT_EQ(square.pixelColor(1, 1), cardColor(QApplication::palette()));
    EXPECT_NE(square.pixelColor(0, 0), square.pixelColor(1, 1));
}

TEST_F(PopoverTest, IsDrawnWithoutWakingOtherThreads) {
    const auto threads = [] {
        const std::filesystem::directory_iterator all("/proc/self/task");
        return std::distance(begin(all), end(all));
    };
    ShadowDesktop desktop;
    for (const bool floats : {false, true}) {
        desktop.hasShadows = floats;
        Popover shown(&desktop);
        auto* view = new PopoverView(
            scene.started(), scene.fake.platform(), [] {}, [] {});
        shown.setContent(view);
        view->rebuild();
        QThreadPool::globalInstance()->waitForDone(); // ends its idle threads
        const auto before = threads();
        shown.showAt(std::nullopt);
        shown.grab();
        EXPECT_EQ(threads(), before) << floats;
    }
}

TEST(PopoverWindow, IsMadeKnownToTheDesktopAndClosedByAClickThatThisTellsOf) {
    FakeJournal told;
    FakeDesktopWindows desktop(&told);
    Popover popover(&desktop);
    popover.setContent(new QWidget);
    popover.findChild<QScrollArea*>()->widget()->setLayout(new QVBoxLayout);
    popover.showAt(std::nullopt);
    EXPECT_EQ(told, (FakeJournal{"willShowPopover", "popoverShown"}));
    QCoreApplication::processEvents();
    EXPECT_EQ(told.size(), 2U) << "painted";
    popover.place();
    EXPECT_EQ(told.back(), "popoverShown") << "it may be higher now";
    told.clear();
    const auto click = desktop.clickedElsewhere;
    click();
    EXPECT_FALSE(popover.isVisible());
    EXPECT_EQ(told, FakeJournal{"popoverHidden"});
    popover.place();
    EXPECT_EQ(told, FakeJournal{"popoverHidden"});
}
