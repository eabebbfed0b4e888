// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"

#include "alerts/Prefs.h"
#include "support/FakePlatform.h"
#include "support/OwnCode.h"
#include "support/WaitUntil.h"
#include "views/popover/Popover.h"
#include "views/text/TimeText.h"

#include <QApplication>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class AppDelegateTest : public testing::Test {
protected:
    FakePlatform fakes;
    int terminations = 0;
    AppDelegate delegate{fakes.platform(), [this] { ++terminations; }};

    AppDelegateTest() { setBattery(80); }

    void setBattery(int percent) {
        fakes.powerSources.sources = {Value(Dictionary{{"Type", "InternalBattery"},
                                                       {"Current Capacity", percent},
                                                       {"Max Capacity", 100},
                                                       {"Power Source State", "Battery Power"},
                                                       {"Time to Empty", 105}})};
    }

    FakeStatusBar::Record& item() { return *fakes.statusBar.items.at(0); }

    /// The popover on the screen, or null.
    static Popover* popover() {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* found = qobject_cast<Popover*>(window);
            if (found != nullptr && found->isVisible())
                return found;
        }
        return nullptr;
    }
    static std::string popoverText() {
        return popover()->findChild<QWidget*>(QStringLiteral("ring"))->accessibleName().toStdString();
    }
    void choose(const std::string& label) {
        for (const auto& entry : item().menu) {
            if (entry.label == label)
                entry.action();
        }
    }
};

} // namespace

TEST_F(AppDelegateTest, ShowsTheBatteryAsSoonAsItHasLaunched) {
    EXPECT_TRUE(fakes.statusBar.items.empty());
    delegate.applicationDidFinishLaunching();
    ASSERT_EQ(fakes.statusBar.items.size(), 1U);
    ASSERT_EQ(item().shown.size(), 1U) << "drawn once at once, and not with what was there before the first reading";
    EXPECT_EQ(item().shown.back(), (StatusItem::Content{.symbol = "battery.75",
                                                        .numberSymbol = "percent.80.level",
                                                        .accessibilityDescription = "Battery",
                                                        .title = " 80%",
                                                        .widestTitle = " 100%",
                                                        .toolTip = "80% · On battery, 1 h 45 min left"}));
}

TEST_F(AppDelegateTest, RedrawsOnALaterTurnWhenTheStateChanges) {
    delegate.applicationDidFinishLaunching();
    fakes.mainLoop.runDue();
    const auto drawn = item().shown.size();
    setBattery(79);
    fakes.mainLoop.advance(60s);
    EXPECT_EQ(item().shown.size(), drawn + 1);
    EXPECT_EQ(item().shown.back().title, " 79%");
    fakes.mainLoop.advance(60s);
    EXPECT_EQ(item().shown.size(), drawn + 1) << "nothing changed";
}

TEST_F(AppDelegateTest, RedrawsWithoutAReadingWhenThePreferencesChange) {
    delegate.applicationDidFinishLaunching();
    fakes.mainLoop.runDue();
    setBattery(50);
    fakes.defaults.setObject("showTime", true);
    fakes.mainLoop.runDue();
    EXPECT_EQ(item().shown.back().title, " 80% · 1:45");
}

TEST_F(AppDelegateTest, UsesTheFirstGlyphThatThePanelKnows) {
    fakes.statusBar.unknownSymbols = {"battery.75", "percent.80.level"};
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(item().shown.back().symbol, "");
    EXPECT_EQ(item().shown.back().numberSymbol, "");
}

TEST_F(AppDelegateTest, OpensThePopoverOnAFreshReadingAndClosesItAgain) {
    delegate.applicationDidFinishLaunching();
    setBattery(42);
    item().action(ScreenPoint{100, 10});
    ASSERT_NE(popover(), nullptr);
    EXPECT_EQ(popoverText(), "42 %, on battery");
    setBattery(41);
    item().action(ScreenPoint{100, 10});
    EXPECT_EQ(popover(), nullptr);
    fakes.mainLoop.runDue();
    EXPECT_EQ(item().shown.back().title, " 42%") << "closing reads nothing";
}

TEST_F(AppDelegateTest, GivesBackTheCodeOnceTheDetailsHaveBeenClosedForAMinute) {
    delegate.applicationDidFinishLaunching();
    const auto openAndClose = [this] {
        choose("Show details");
        popover()->hide();
    };
    openAndClose();
    touchCode();
    const long all = residentMemory();
    const long half = all - codeSize() / 2;
    fakes.mainLoop.advance(50s);
    openAndClose();
    fakes.mainLoop.advance(50s);
    EXPECT_GT(residentMemory(), half);
    choose("Show details");
    fakes.mainLoop.advance(50s);
    EXPECT_GT(residentMemory(), half) << "they are open";
    popover()->hide();
    fakes.mainLoop.advance(2min);
    EXPECT_LT(residentMemory(), half);
    openAndClose();
    touchCode();
    const long less = residentMemory() - codeSize() / 2;
    fakes.mainLoop.advance(80s); // and no refresh yet
    choose("Show details");
    EXPECT_GT(residentMemory(), less) << "what it needs is not given back first";
}

TEST_F(AppDelegateTest, TheClickThatClosesThePopoverDoesNotOpenItAgain) {
    delegate.applicationDidFinishLaunching();
    item().action(ScreenPoint{100, 10});
    Popover* const open = popover();
    ASSERT_NE(open, nullptr);
    // A panel takes the keyboard focus at a click on the item, and only then reports the click.
    QEvent deactivated(QEvent::WindowDeactivate);
    QApplication::sendEvent(open, &deactivated);
    EXPECT_EQ(popover(), nullptr);
    item().action(ScreenPoint{100, 10});
    EXPECT_EQ(popover(), nullptr);
    // "Show details" in the menu always opens it.
    choose("Show details");
    EXPECT_EQ(popover(), open);
    open->hide();
    ASSERT_TRUE(waitUntil([&] { return !open->wasJustClosed(); }));
    item().action(ScreenPoint{100, 10});
    EXPECT_EQ(popover(), open);
}

TEST_F(AppDelegateTest, ShowDetailsOpensThePopoverAndKeepsItOpen) {
    delegate.applicationDidFinishLaunching();
    choose("Show details");
    ASSERT_NE(popover(), nullptr);
    setBattery(42);
    delegate.showDetails();
    ASSERT_NE(popover(), nullptr);
    fakes.mainLoop.runDue();
    EXPECT_EQ(popoverText(), "42 %, on battery");
}

TEST_F(AppDelegateTest, ThePopoverFollowsTheBatteryWhileItIsOpen) {
    delegate.applicationDidFinishLaunching();
    delegate.showDetails();
    setBattery(42);
    fakes.mainLoop.advance(60s);
    EXPECT_EQ(popoverText(), "42 %, on battery");
}

TEST_F(AppDelegateTest, EndsTheProgramFromTheMenuAndWithTheSession) {
    delegate.applicationDidFinishLaunching();
    choose("Quit");
    EXPECT_EQ(terminations, 1);
    fakes.sessionEvents.endSession();
    EXPECT_EQ(terminations, 2);
}

TEST_F(AppDelegateTest, SnoozesFromTheMenuAndCancelsThere) {
    delegate.applicationDidFinishLaunching();
    const auto labels = [this] {
        std::vector<std::string> all;
        for (const auto& entry : item().menu)
            all.push_back(entry.label);
        return all;
    };
    EXPECT_EQ(labels(), (std::vector<std::string>{"Show details", "Snooze alerts for 1 hour", "Settings…", "Quit"}));
    choose("Snooze alerts for 1 hour");
    fakes.mainLoop.runDue();
    const Date until = fakes.clock.now() + 1h;
    const std::string cancel = "Cancel snooze (until " + shortTime(until).toStdString() + ")";
    EXPECT_EQ(labels(), (std::vector<std::string>{"Show details", cancel, "Settings…", "Quit"}));
    EXPECT_EQ(Prefs::snoozeUntil(fakes.defaults, fakes.clock), until);
    choose(cancel);
    fakes.mainLoop.runDue();
    EXPECT_EQ(labels().at(1), "Snooze alerts for 1 hour");
    EXPECT_EQ(Prefs::snoozeUntil(fakes.defaults, fakes.clock), std::nullopt);
}

TEST_F(AppDelegateTest, TheMenuTurnsLowPowerModeOnAndOff) {
    const std::vector<std::string> usual{"Show details", "Snooze alerts for 1 hour", "Settings…", "Quit"};
    const auto labels = [&] {
        fakes.mainLoop.runDue();
        std::vector<std::string> all;
        for (const auto& entry : item().menu)
            all.push_back(entry.label);
        return all;
    };
    delegate.applicationDidFinishLaunching();
    fakes.lowPowerSwitch.become(true, false);
    setBattery(25);
    fakes.mainLoop.advance(60s);
    EXPECT_EQ(labels(), usual) << "the reminder has a button";
    fakes.notificationCenter.presentWithoutButtons("lowPower");
    fakes.mainLoop.runDue();
    EXPECT_EQ(labels(), (std::vector<std::string>{"Show details", "Snooze alerts for 1 hour", "Turn on Low Power Mode",
                                                  "Settings…", "Quit"}));
    choose("Turn on Low Power Mode");
    EXPECT_EQ(fakes.lowPowerSwitch.holds, 1);
    fakes.lowPowerSwitch.become(true, true);
    EXPECT_EQ(labels(), (std::vector<std::string>{"Show details", "Snooze alerts for 1 hour", "Turn off Low Power Mode",
                                                  "Settings…", "Quit"}));
    choose("Turn off Low Power Mode");
    EXPECT_EQ(fakes.lowPowerSwitch.releases, 1);
    EXPECT_EQ(labels().size(), 5U) << "still suggested";
    fakes.lowPowerSwitch.become(false, false);
    EXPECT_EQ(labels(), usual);
}

TEST_F(AppDelegateTest, TheMenuNamesNoTimeForASnoozeBeyondAnyCalendar) {
    fakes.defaults.setObject("snoozeUntil", 1e18);
    AppDelegate started{fakes.platform(), [] {}}; // reads the end of the snooze
    started.applicationDidFinishLaunching();
    EXPECT_EQ(item().menu.at(1).label, "Cancel snooze");
    choose("Cancel snooze");
    fakes.mainLoop.runDue();
    EXPECT_EQ(item().menu.at(1).label, "Snooze alerts for 1 hour");
}

TEST_F(AppDelegateTest, TheMenuIsLeftAloneWhileItsWordsStayTheSame) {
    delegate.applicationDidFinishLaunching();
    choose("Snooze alerts for 1 hour");
    fakes.mainLoop.runDue();
    const int menus = item().menus;
    fakes.mainLoop.advance(10min);
    EXPECT_EQ(item().menus, menus);
}

TEST_F(AppDelegateTest, TheMenuFollowsASnoozeThatRunsOut) {
    delegate.applicationDidFinishLaunching();
    choose("Snooze alerts for 1 hour");
    fakes.mainLoop.advance(1h + 1min);
    EXPECT_EQ(item().menu.at(1).label, "Snooze alerts for 1 hour");
}

TEST_F(AppDelegateTest, OpensOneSettingsWindowAndClosesThePopover) {
    delegate.applicationDidFinishLaunching();
    delegate.showDetails();
    const auto windows = [] {
        QList<QWidget*> found;
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->objectName() == QStringLiteral("settingsWindow"))
                found.append(window);
        }
        return found;
    };
    EXPECT_TRUE(windows().isEmpty()) << "made when it is first wanted";
    popover()->findChild<QPushButton*>(QStringLiteral("settingsButton"))->click();
    EXPECT_EQ(popover(), nullptr);
    ASSERT_EQ(windows().size(), 1);
    QWidget* window = windows().front();
    EXPECT_TRUE(window->isVisible());
    window->move(3, 4);
    window->close();
    choose("Settings…");
    EXPECT_EQ(windows(), QList<QWidget*>{window}) << "kept";
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->pos(), QPoint(3, 4));
}
