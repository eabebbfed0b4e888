// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/PanelBar.h"

#include "platform/qt/ProgramFiles.h"
#include "support/FakeClock.h"
#include "support/FakeMainLoop.h"
#include "support/FakeStatusBar.h"
#include "support/PrivateBus.h"
#include "support/WaitUntil.h"
#include "support/Watcher.h"

#include <QDBusPendingCall>
#include <gtest/gtest.h>

#include <memory>

using namespace std::chrono_literals;

namespace {

/// The bus and the messages on it are real; the time is not.
class PanelBarTest : public testing::Test {
protected:
    PrivateBus bus;
    QDBusConnection connection = QDBusConnection::connectToBus(bus.address(), QStringLiteral("item"));
    FakeClock clock;
    FakeMainLoop loop{clock};
    FakeStatusBar tray; ///< the X11 system tray
    PanelBar bar{connection, loop, programFile("share/velmora/icons"),
                 [this](const GlyphImages&) { return tray.createItem(); }, [this] { ++unseen; }};
    std::unique_ptr<StatusItem> item;
    Watcher watcher{bus, QStringLiteral("watcher")};
    int clicks = 0;
    int unseen = 0;

    ~PanelBarTest() override {
        item.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("item"));
    }

    static StatusItem::Content content(const char* symbol = "battery.75") {
        StatusItem::Content content;
        content.symbol = symbol;
        return content;
    }

    void start() {
        item = bar.createItem();
        item->setAction([this](std::optional<ScreenPoint>) { ++clicks; });
        item->setMenu({{.label = "Quit", .action = [] {}}});
        item->show(content());
    }

    /// In its first minute: the item knows that there is no panel, and waits for one and for that minute to pass.
    bool waits() {
        return waitUntil([&] { return loop.waiting() == 2; });
    }

    /// The item has asked the watcher and has its answer, because it has answered a question that the watcher sent
    /// later.
    bool knowsWatcher() {
        if (!waitUntil([&] { return watcher.questions() == 1; }))
            return false;
        const QDBusPendingCall call = watcher.askForTitle();
        return waitUntil([&] { return call.isFinished(); }) && !call.isError();
    }

    bool isInTray() const { return !tray.items.empty() && tray.items.back()->isAlive; }
};

} // namespace

TEST_F(PanelBarTest, PutsTheItemIntoTheOldTrayAfterTenSecondsWithoutAPanel) {
    start();
    ASSERT_TRUE(waits());
    loop.advance(9.9s);
    EXPECT_FALSE(isInTray());
    loop.advance(0.1s);
    ASSERT_TRUE(isInTray());
    const FakeStatusBar::Record& shown = *tray.items.back();
    EXPECT_EQ(shown.shown, std::vector{content()});
    ASSERT_EQ(shown.menu.size(), 1U);
    EXPECT_EQ(shown.menu.front().label, "Quit");
    shown.action(ScreenPoint{});
    EXPECT_EQ(clicks, 1);
    item->show(content("battery.50"));
    EXPECT_EQ(shown.shown.back(), content("battery.50"));
}

TEST_F(PanelBarTest, TakesTheItemOutOfTheOldTrayWhenAPanelComes) {
    start();
    ASSERT_TRUE(waits());
    loop.advance(10s);
    ASSERT_TRUE(isInTray());
    watcher.takeName();
    EXPECT_TRUE(waitUntil([&] { return !isInTray(); }));
    EXPECT_EQ(watcher.items, QStringList(connection.baseService()));
    watcher.leave();
    ASSERT_TRUE(waits());
    loop.advance(10s);
    EXPECT_TRUE(isInTray());
}

TEST_F(PanelBarTest, DoesNotCountAWatcherWithoutAPanel) {
    watcher.hasHost = false;
    watcher.takeName();
    start();
    ASSERT_TRUE(waits());
    loop.advance(10s);
    ASSERT_TRUE(isInTray());
    watcher.hasHost = true;
    Q_EMIT watcher.StatusNotifierHostRegistered();
    EXPECT_TRUE(waitUntil([&] { return !isInTray(); }));
}

TEST_F(PanelBarTest, LeavesTheItemInTheOldTrayWhenAWatcherWithoutAPanelComes) {
    start();
    ASSERT_TRUE(waits());
    loop.advance(10s);
    ASSERT_TRUE(isInTray());
    watcher.hasHost = false;
    watcher.takeName();
    ASSERT_TRUE(knowsWatcher());
    loop.advance(1min);
    EXPECT_TRUE(isInTray());
    EXPECT_EQ(tray.items.size(), 1U);
}

TEST_F(PanelBarTest, NeverUsesTheOldTrayWhenAPanelComesInTime) {
    start();
    ASSERT_TRUE(waits());
    loop.advance(9s);
    watcher.takeName();
    ASSERT_TRUE(knowsWatcher());
    loop.advance(1min);
    EXPECT_TRUE(tray.items.empty());
}

TEST_F(PanelBarTest, NeverUsesTheOldTrayWhenAPanelIsThere) {
    watcher.takeName();
    start();
    ASSERT_TRUE(knowsWatcher());
    loop.advance(1min);
    EXPECT_TRUE(tray.items.empty());
}

TEST_F(PanelBarTest, TellsThatNoPanelHasComeInTheFirstMinute) {
    start();
    ASSERT_TRUE(waits());
    loop.advance(59s);
    EXPECT_EQ(unseen, 0);
    loop.advance(1s);
    EXPECT_EQ(unseen, 1);
    watcher.takeName();
    ASSERT_TRUE(knowsWatcher());
    watcher.leave();
    ASSERT_TRUE(waitUntil([&] { return loop.waiting() == 1; }));
    loop.advance(2min);
    EXPECT_EQ(unseen, 1);
}

TEST_F(PanelBarTest, DoesNotMissAPanelThatHasBeenThereInTheFirstMinute) {
    start();
    ASSERT_TRUE(waits());
    loop.advance(58s);
    watcher.takeName();
    ASSERT_TRUE(knowsWatcher());
    watcher.leave();
    ASSERT_TRUE(waits());
    loop.advance(2min);
    EXPECT_EQ(unseen, 0);
}
