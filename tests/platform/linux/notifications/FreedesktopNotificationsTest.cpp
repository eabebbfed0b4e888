// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/FreedesktopNotifications.h"

#include "support/NotificationsFixture.h"

#include <QWindow>

/// Notifications are shown, replaced and withdrawn, and the user reacts to them.
class FreedesktopNotificationsTest : public NotificationsFixture {
protected:
    using Status = NotificationCenter::AuthorizationStatus;

    void startWithDaemon() {
        daemon.appear();
        start();
        settle();
    }
};

TEST_F(FreedesktopNotificationsTest, SaysNothingUntilThereIsSomethingToShow) {
    startWithDaemon();
    EXPECT_EQ(daemon.calls, QStringList());
}

TEST_F(FreedesktopNotificationsTest, SendsARequestAsTheProtocolHasIt) {
    startWithDaemon();
    add(request("tooLong"));
    ASSERT_EQ(daemon.sent.size(), 1U);
    const auto& sent = daemon.sent[0];
    EXPECT_EQ(sent.appName, QStringLiteral("Velmora"));
    EXPECT_EQ(sent.replaced, 0U);
    EXPECT_EQ(sent.icon, QStringLiteral("/icon.svg"));
    EXPECT_EQ(sent.summary, QStringLiteral("Title"));
    EXPECT_EQ(sent.body, QStringLiteral("Body"));
    EXPECT_EQ(sent.actions, (QStringList{QStringLiteral("SNOOZE"), QStringLiteral("Snooze 1 hour")}));
    EXPECT_EQ(sent.timeout, -1);
    EXPECT_EQ(sent.hints, (QVariantMap{{QStringLiteral("urgency"), QVariant::fromValue<uchar>(1)},
                                       {QStringLiteral("category"), QStringLiteral("VL_ALERT")},
                                       {QStringLiteral("desktop-entry"), QStringLiteral("app.velmora.Velmora")},
                                       {QStringLiteral("x-velmora-identifier"), QStringLiteral("tooLong")},
                                       {QStringLiteral("suppress-sound"), true}}));
    EXPECT_EQ(sent.hints.value(QStringLiteral("urgency")).typeId(), QMetaType::UChar);
}

TEST_F(FreedesktopNotificationsTest, SendsItsIconAsAnImageWhereThatIsNotShownOtherwise) {
    daemon.serverName = QStringLiteral("Budgie Notification Server");
    startWithDaemon();
    add(request("tooLong"));
    ASSERT_EQ(daemon.sent.size(), 1U);
    EXPECT_EQ(daemon.sent[0].hints.value(QStringLiteral("image-path")), QStringLiteral("/icon.svg"));
}

TEST_F(FreedesktopNotificationsTest, SendsButtonsOnlyWhereTheyAreTakenAndOnlyThoseOfTheCategory) {
    daemon.capabilities = QStringList{QStringLiteral("body")};
    startWithDaemon();
    add(request("tooLong"));
    ASSERT_EQ(daemon.sent.size(), 1U);
    EXPECT_EQ(daemon.sent[0].actions, QStringList());
    EXPECT_EQ(delegate.withoutButtons, std::vector<std::string>{"tooLong"});

    daemon.leave();
    daemon.capabilities = QStringList{QStringLiteral("actions")};
    daemon.appear();
    settle();
    Request other = request("tooLong");
    other.categoryIdentifier = "OTHER";
    add(other);
    ASSERT_EQ(daemon.sent.size(), 2U);
    EXPECT_EQ(daemon.sent[1].actions, QStringList());
    EXPECT_EQ(delegate.withoutButtons.size(), 1U) << "that daemon takes buttons";
}

TEST_F(FreedesktopNotificationsTest, EscapesTheBodyForADaemonThatReadsMarkup) {
    daemon.capabilities = QStringList{QStringLiteral("body-markup")};
    startWithDaemon();
    Request asked = request("tooLong", "<i>Title</i>");
    asked.body = "a < b & c";
    add(asked);
    ASSERT_EQ(daemon.sent.size(), 1U);
    EXPECT_EQ(daemon.sent[0].body, QStringLiteral("a &lt; b &amp; c"));
    EXPECT_EQ(daemon.sent[0].summary, QStringLiteral("<i>Title</i>"));
}

TEST_F(FreedesktopNotificationsTest, AsksWhatTheDaemonCanDoOnce) {
    startWithDaemon();
    for (const char* identifier : {"low", "health", "low"})
        add(request(identifier));
    EXPECT_EQ(daemon.sent.size(), 3U);
    EXPECT_EQ(daemon.count(QStringLiteral("GetServerInformation")), 1);
    EXPECT_EQ(daemon.count(QStringLiteral("GetCapabilities")), 1);
}

TEST_F(FreedesktopNotificationsTest, ReplacesWhatIsShownUnderTheSameIdentifier) {
    startWithDaemon();
    add(request("low", "A"));
    add(request("health", "B"));
    add(request("low", "C"));
    ASSERT_EQ(daemon.sent.size(), 3U);
    EXPECT_EQ(daemon.sent[1].replaced, 0U);
    EXPECT_EQ(daemon.sent[2].replaced, daemon.sent[0].id);
    EXPECT_EQ(daemon.shown.size(), 2);
}

TEST_F(FreedesktopNotificationsTest, DoesNotReplaceWhatTheUserHasClosed) {
    startWithDaemon();
    add(request("low"));
    daemon.closeByUser(daemon.sent[0].id);
    settle();
    add(request("low"));
    ASSERT_EQ(daemon.sent.size(), 2U);
    EXPECT_EQ(daemon.sent[1].replaced, 0U);
}

TEST_F(FreedesktopNotificationsTest, ShowsANewOneWhereTheDaemonDoesNotKnowTheOldOne) {
    startWithDaemon();
    add(request("low", "A"));
    daemon.forgetsIds = true;
    add(request("low", "B"));
    ASSERT_EQ(daemon.sent.size(), 3U);
    EXPECT_EQ(daemon.sent[1].replaced, daemon.sent[0].id);
    EXPECT_EQ(daemon.sent[2].replaced, 0U);
    EXPECT_EQ(daemon.sent[2].summary, QStringLiteral("B"));
}

TEST_F(FreedesktopNotificationsTest, SendsTheLatestOfThoseThatCameBeforeTheAnswer) {
    daemon.manners[QStringLiteral("Notify")] = Manner::waits;
    startWithDaemon();
    add(request("low", "A"));
    for (const char* title : {"B", "C", "D"})
        add(request("low", title));
    EXPECT_EQ(daemon.count(QStringLiteral("Notify")), 1);
    daemon.manners.clear();
    daemon.answerWaiting();
    settle();
    ASSERT_EQ(daemon.sent.size(), 2U);
    EXPECT_EQ(daemon.sent[1].summary, QStringLiteral("D"));
    EXPECT_EQ(daemon.sent[1].replaced, daemon.sent[0].id);
    EXPECT_EQ(daemon.shown.size(), 1);
}

TEST_F(FreedesktopNotificationsTest, SendsThoseThatWaitedInTheOrderInWhichTheyCame) {
    const std::vector<std::string> order{"tooLong", "low", "lowPower", "chargeLimit", "health"};
    const auto sent = [&] {
        std::vector<std::string> titles;
        for (const auto& one : daemon.sent)
            titles.push_back(one.summary.toStdString());
        return titles;
    };
    daemon.appear();
    start();
    for (const std::string& identifier : order)
        center->add(request(identifier, identifier));
    settle();
    EXPECT_EQ(sent(), order) << "the first word to the daemon";
    // Answers to several questions may come in another order.
    EXPECT_EQ(daemon.count(QStringLiteral("Get")), 1) << "whether the user is to be left alone";
    daemon.leave();
    settle();
    daemon.sent.clear();
    daemon.appear();
    settle();
    for (const std::string& identifier : order)
        center->add(request(identifier, identifier));
    settle();
    EXPECT_EQ(sent(), order) << "the daemon was started again";
}

TEST_F(FreedesktopNotificationsTest, TakesAwayWhatIsShown) {
    startWithDaemon();
    add(request("low"));
    add(request("health"));
    center->removeDelivered({"low", "unknown", ""});
    settle();
    EXPECT_EQ(daemon.closed, QList<uint>{daemon.sent[0].id});
    add(request("low"));
    EXPECT_EQ(daemon.sent[2].replaced, 0U);
}

TEST_F(FreedesktopNotificationsTest, TakesAwayWhatIsOnItsWay) {
    daemon.manners[QStringLiteral("Notify")] = Manner::waits;
    startWithDaemon();
    add(request("low", "A"));
    add(request("low", "B"));
    center->removeDelivered({"low"});
    settle();
    daemon.answerWaiting();
    settle();
    ASSERT_EQ(daemon.sent.size(), 1U);
    EXPECT_EQ(daemon.closed, QList<uint>{daemon.sent[0].id});
    EXPECT_TRUE(daemon.shown.isEmpty());
}

TEST_F(FreedesktopNotificationsTest, ShowsWhatIsAskedForAfterAWithdrawal) {
    daemon.manners[QStringLiteral("Notify")] = Manner::waits;
    startWithDaemon();
    add(request("low", "A"));
    center->removeDelivered({"low"});
    add(request("low", "B"));
    daemon.manners.clear();
    daemon.answerWaiting();
    settle();
    ASSERT_EQ(daemon.sent.size(), 2U);
    EXPECT_EQ(daemon.sent[1].summary, QStringLiteral("B"));
    EXPECT_EQ(daemon.shown, QSet<uint>{daemon.sent[1].id});
}

TEST_F(FreedesktopNotificationsTest, SendsNothingThatIsWithdrawnBeforeTheDaemonIsKnown) {
    for (const char* question : {"GetServerInformation", "GetCapabilities", "Get"}) {
        daemon.manners = {{QString::fromLatin1(question), Manner::waits}};
        daemon.appear();
        start();
        add(request("low"));
        center->removeDelivered({"low"});
        daemon.manners.clear();
        daemon.answerWaiting();
        settle();
        EXPECT_TRUE(daemon.sent.empty()) << question;
        daemon.leave();
    }
}

TEST_F(FreedesktopNotificationsTest, TellsAButtonOnce) {
    startWithDaemon();
    add(request("low"));
    daemon.invoke(daemon.sent[0].id, QStringLiteral("SNOOZE"));
    daemon.invoke(daemon.sent[0].id, QStringLiteral("SNOOZE"));
    daemon.closeByUser(daemon.sent[0].id);
    settle();
    EXPECT_EQ(delegate.received, std::vector<std::string>{"SNOOZE"});
}

TEST_F(FreedesktopNotificationsTest, TakesItAwayWhenAButtonWasPressed) {
    startWithDaemon();
    for (uint round = 1; round <= 2; ++round) {
        add(request("low"));
        daemon.invoke(round, QStringLiteral("SNOOZE"));
        settle();
        EXPECT_EQ(delegate.received.size(), round);
        EXPECT_TRUE(daemon.shown.isEmpty()) << "not every daemon does that by itself";
        EXPECT_EQ(daemon.sent.back().replaced, 0U);
    }
}

TEST_F(FreedesktopNotificationsTest, LeavesWhatTakesItsPlaceWhenAButtonWasPressed) {
    startWithDaemon();
    add(request("low", "A"));
    daemon.manners[QStringLiteral("Notify")] = Manner::waits;
    add(request("low", "B"));
    daemon.invoke(1, QStringLiteral("SNOOZE"));
    daemon.invoke(1, QStringLiteral("SNOOZE"));
    settle();
    EXPECT_EQ(delegate.received.size(), 1U);
    daemon.answerWaiting();
    settle();
    EXPECT_EQ(daemon.shown, QSet<uint>{1});
    daemon.invoke(1, QStringLiteral("SNOOZE"));
    settle();
    EXPECT_EQ(delegate.received.size(), 2U);
    EXPECT_TRUE(daemon.shown.isEmpty());
}

TEST_F(FreedesktopNotificationsTest, IgnoresButtonsThatAreNotOurs) {
    startWithDaemon();
    add(request("low"));
    daemon.invoke(777, QStringLiteral("SNOOZE"));
    daemon.invoke(0, QStringLiteral("SNOOZE"));
    daemon.invoke(1, QStringLiteral("default"));
    daemon.tell(QStringLiteral("ActionInvoked"), {QStringLiteral("1"), QStringLiteral("SNOOZE")});
    daemon.tell(QStringLiteral("ActionInvoked"), {1U});
    daemon.tell(QStringLiteral("NotificationClosed"), {1U});
    settle();
    EXPECT_EQ(delegate.received, std::vector<std::string>());
    daemon.closeByUser(1);
    daemon.invoke(1, QStringLiteral("SNOOZE"));
    settle();
    EXPECT_EQ(delegate.received, std::vector<std::string>()) << "it was closed before";
}

TEST_F(FreedesktopNotificationsTest, BelievesOnlyTheDaemonItself) {
    startWithDaemon();
    add(request("low"));
    FakeNotificationDaemon stranger(bus, QStringLiteral("stranger"));
    stranger.invoke(1, QStringLiteral("SNOOZE"));
    stranger.closeByUser(1);
    stranger.roundTrip();
    settle();
    EXPECT_EQ(delegate.received, std::vector<std::string>());
    add(request("low"));
    EXPECT_EQ(daemon.sent[1].replaced, 1U);
}

TEST_F(FreedesktopNotificationsTest, MayBeChangedWhileAButtonIsTold) {
    startWithDaemon();
    add(request("low"));
    delegate.onReceive = [this] {
        center->removeDelivered({"low"});
        center->add(request("low", "again"));
    };
    daemon.invoke(1, QStringLiteral("SNOOZE"));
    settle();
    EXPECT_EQ(daemon.closed, QList<uint>{1});
    ASSERT_EQ(daemon.sent.size(), 2U);
    EXPECT_EQ(daemon.sent[1].replaced, 0U);
    EXPECT_EQ(daemon.shown, QSet<uint>{2});
    center->setDelegate(nullptr);
    daemon.invoke(2, QStringLiteral("SNOOZE"));
    settle();
    EXPECT_EQ(delegate.received.size(), 1U);
}

TEST_F(FreedesktopNotificationsTest, AsksHowToShowItWhileAWindowOfOursIsInFront) {
    startWithDaemon();
    add(request("low", "A", "Glass"));
    EXPECT_TRUE(delegate.presented.empty());
    QWindow window;
    window.show();
    window.requestActivate();
    ASSERT_TRUE(waitUntil([&] { return window.isActive(); }));
    delegate.options = {.alert = true, .sound = false, .badge = false, .list = false};
    add(request("low", "B", "Glass"));
    delegate.options = {.alert = false, .sound = true, .badge = true, .list = false};
    add(request("low", "C", "Glass"));
    EXPECT_EQ(delegate.presented, (std::vector<std::string>{"low", "low"}));
    ASSERT_EQ(daemon.sent.size(), 2U);
    EXPECT_EQ(daemon.sent[1].summary, QStringLiteral("B"));
    EXPECT_EQ(sounds.played, std::vector<std::string>{"Glass"});
}

TEST_F(FreedesktopNotificationsTest, RemembersThatTheUserWasAskedAndTellsItLater) {
    start();
    std::vector<Status> told;
    const auto ask = [&] {
        const std::size_t before = told.size();
        center->getAuthorizationStatus([&](Status status) { told.push_back(status); });
        EXPECT_EQ(told.size(), before) << "never at once";
        QCoreApplication::processEvents();
    };
    ask();
    center->requestAuthorization({.alert = true, .sound = true});
    ask();
    start();
    ask();
    EXPECT_EQ(told, (std::vector<Status>{Status::notDetermined, Status::authorized, Status::authorized}));
}

TEST_F(FreedesktopNotificationsTest, ShowsWhateverTheUserWasAsked) {
    startWithDaemon();
    add(request("low"));
    EXPECT_EQ(daemon.sent.size(), 1U);
}
