// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/NotificationsFixture.h"

#include <QDBusVariant>

/// Whether the notification daemon or the program plays the sound, and when neither does.
class NotificationSoundTest : public NotificationsFixture {
protected:
    using Played = std::vector<std::string>;

    void startWith(const char* name, const QStringList& capabilities = {}) {
        daemon.serverName = QString::fromLatin1(name);
        daemon.capabilities = capabilities;
        daemon.appear();
        start();
    }
    QVariant hint(const char* name) const { return daemon.sent.back().hints.value(QString::fromLatin1(name)); }
};

TEST_F(NotificationSoundTest, IsTheDaemonsOnGnomeAndPlasma) {
    for (const char* name : {"gnome-shell", "Plasma"}) {
        startWith(name, {QStringLiteral("sound")});
        add(request("low", "A", "Glass"));
        EXPECT_EQ(hint("sound-file"), QStringLiteral("/sounds/Glass")) << name;
        EXPECT_FALSE(hint("suppress-sound").isValid()) << name;
        add(request("low", "A", "default"));
        EXPECT_EQ(hint("sound-name"), QStringLiteral("message-new-instant")) << name;
        add(request("low", "A"));
        EXPECT_EQ(hint("suppress-sound"), true) << name;
        EXPECT_FALSE(hint("sound-name").isValid() || hint("sound-file").isValid()) << name;
        EXPECT_EQ(sounds.played, Played()) << name;
        daemon.leave();
    }
}

TEST_F(NotificationSoundTest, IsOursElsewhere) {
    Played expected;
    for (const char* name : {"Plasma", "dunst", "Xfce Notify Daemon", "mako", "Notification Daemon"}) {
        startWith(name, {QStringLiteral("body")});
        add(request("low", "A", "Glass"));
        EXPECT_EQ(hint("suppress-sound"), true) << name;
        EXPECT_FALSE(hint("sound-name").isValid() || hint("sound-file").isValid()) << name;
        add(request("low", "A", "default"));
        add(request("low", "A"));
        expected.insert(expected.end(), {"Glass", "default"});
        EXPECT_EQ(sounds.played, expected) << name;
        daemon.leave();
    }
}

TEST_F(NotificationSoundTest, IsThatOfTheFirstOfSeveralAtOnce) {
    startWith("dunst");
    center->add(request("low", "A", "Basso"));
    center->add(request("lowPower", "B", "Glass"));
    settle();
    ASSERT_EQ(daemon.sent.size(), 2U);
    EXPECT_EQ(sounds.played, Played{"Basso"});
    add(request("low", "A", "Ping"));
    EXPECT_EQ(sounds.played, (Played{"Basso", "Ping"})) << "the same one again is heard again";
    add(request("health", "C", "Hero"));
    EXPECT_EQ(sounds.played, (Played{"Basso", "Ping", "Hero"})) << "a later one";
}

TEST_F(NotificationSoundTest, IsThatOfTheFirstAlsoIfItIsShownLater) {
    startWith("dunst");
    add(request("low", "A"));
    daemon.forgetsIds = true; // so that it is sent twice
    center->add(request("low", "A", "Basso"));
    center->add(request("lowPower", "B", "Glass"));
    settle();
    ASSERT_FALSE(sounds.played.empty());
    EXPECT_EQ(sounds.played.back(), "Basso");
}

TEST_F(NotificationSoundTest, IsNotHeardBeforeItIsShown) {
    startWith("dunst");
    daemon.manners[QStringLiteral("Notify")] = Manner::waits;
    add(request("low", "A", "Glass"));
    EXPECT_EQ(sounds.played, Played());
    daemon.answerWaiting();
    settle();
    EXPECT_EQ(sounds.played, Played{"Glass"});
}

TEST_F(NotificationSoundTest, IsNotHeardWithoutANotification) {
    startWith("dunst");
    daemon.manners[QStringLiteral("Notify")] = Manner::refuses;
    add(request("low", "A", "Glass"));
    daemon.manners[QStringLiteral("Notify")] = Manner::waits;
    add(request("low", "A", "Glass"));
    center->removeDelivered({"low"});
    daemon.answerWaiting();
    settle();
    EXPECT_EQ(sounds.played, Played());
}

TEST_F(NotificationSoundTest, IsNotHeardWhileTheUserIsToBeLeftAlone) {
    const struct {
        const char* name;
        const char* property;
    } rows[] = {{"dunst", "org.dunstproject.cmd0.paused"},
                {"Plasma", "org.freedesktop.Notifications.Inhibited"},
                {"another", "org.freedesktop.Notifications.Inhibited"}};
    for (const auto& row : rows) {
        sounds.played.clear();
        startWith(row.name);
        for (const bool doNotDisturb : {true, false}) {
            daemon.properties = {{QString::fromLatin1(row.property), doNotDisturb}};
            add(request("low", "A", "Glass"));
            EXPECT_EQ(sounds.played, doNotDisturb ? Played() : Played{"Glass"}) << row.name;
            EXPECT_EQ(hint("urgency").toInt(), doNotDisturb ? 1 : 2) << row.name;
            add(request("health"));
            EXPECT_EQ(hint("urgency").toInt(), 1) << row.name;
        }
        daemon.properties.clear();
        add(request("low"));
        EXPECT_EQ(hint("urgency").toInt(), 1) << row.name << " does not tell";
        daemon.leave();
    }
}

TEST_F(NotificationSoundTest, IsHeardWhereTheAnswerIsNonsense) {
    startWith("dunst");
    const QVariantList answers[] = {{},
                                    {true},
                                    {QStringLiteral("yes")},
                                    {QVariant::fromValue(QDBusVariant(QStringLiteral("yes")))},
                                    {QVariant::fromValue(QDBusVariant(1))}};
    daemon.manners[QStringLiteral("Get")] = Manner::talksNonsense;
    for (const QVariantList& answer : answers) {
        daemon.nonsense = answer;
        sounds.played.clear();
        add(request("low", "A", "Glass"));
        EXPECT_EQ(sounds.played, Played{"Glass"});
        EXPECT_EQ(hint("urgency").toInt(), 1);
    }
}

TEST_F(NotificationSoundTest, FollowsTheModesOfMako) {
    startWith("mako");
    daemon.manners[QStringLiteral("ListModes")] = Manner::talksNonsense;
    daemon.nonsense = {QStringList{QStringLiteral("default"), QStringLiteral("do-not-disturb")}};
    add(request("low", "A", "Glass"));
    EXPECT_EQ(sounds.played, Played());
    daemon.nonsense = {QStringList{QStringLiteral("default")}};
    add(request("low", "A", "Glass"));
    EXPECT_EQ(sounds.played, Played{"Glass"});
    EXPECT_EQ(hint("urgency").toInt(), 2);
}

TEST_F(NotificationSoundTest, FollowsTheSettingOfXfce) {
    startWith("Xfce Notify Daemon");
    daemon.appearAs(QStringLiteral("org.xfce.Xfconf"));
    const QString method = QStringLiteral("GetProperty");
    daemon.manners[method] = Manner::talksNonsense;
    daemon.nonsense = {QVariant::fromValue(QDBusVariant(true))};
    add(request("low", "A", "Glass"));
    EXPECT_EQ(sounds.played, Played());
    EXPECT_EQ(hint("urgency").toInt(), 1);
    daemon.manners[method] = Manner::refuses;
    daemon.refusal = QStringLiteral("org.xfce.Xfconf.Error.PropertyNotFound");
    add(request("low", "A", "Glass"));
    EXPECT_EQ(sounds.played, Played{"Glass"});
    EXPECT_EQ(hint("urgency").toInt(), 2) << "never touched, so it is off";
    daemon.refusal = QStringLiteral("test.Refused");
    add(request("low"));
    EXPECT_EQ(hint("urgency").toInt(), 1) << "not known";
}
