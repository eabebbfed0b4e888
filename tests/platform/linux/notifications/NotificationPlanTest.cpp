// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/NotificationPlan.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;
using Request = NotificationCenter::Request;

const std::vector<NotificationCenter::Action> snooze{{.identifier = "SNOOZE", .title = "Snooze 1 hour"}};

std::optional<std::filesystem::path> soundFile(std::string_view name) {
    if (name == "Glass")
        return "/opt/sounds/Glass.oga";
    if (name == "Relative")
        return "sounds/Relative.oga";
    return std::nullopt;
}

Request request(std::optional<std::string> sound = std::nullopt) {
    return {.identifier = "tooLong",
            .title = "Plugged in",
            .body = "for <b>long</b> & longer",
            .categoryIdentifier = "VL_ALERT",
            .sound = std::move(sound)};
}

NotificationPlan plan(const NotificationServer& server, std::optional<bool> doNotDisturb, const Request& asked) {
    return planNotification(server, doNotDisturb, asked, snooze, soundFile);
}

} // namespace

TEST(NotificationPlan, LeavesTheSoundToTheDaemonOnlyWhereThatPlaysWhatIsNamed) {
    struct {
        const char* name;
        Strings capabilities;
        bool playsSounds;
    } const rows[] = {
        {"gnome-shell", {"actions", "body", "sound"}, true},
        {"gnome-shell", {}, true},
        {"Plasma", {"body", "sound"}, true},
        {"Plasma", {"body"}, false},
        {"Notification Daemon", {"sound"}, false},
        {"cinnamon", {"sound"}, false},
        {"Xfce Notify Daemon", {"sound"}, false},
        {"dunst", {}, false},
        {"mako", {}, false},
        {"lxqt-notificationd", {}, false},
        {"", {}, false},
        {"plasma", {"sound"}, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(notificationServer(row.name, row.capabilities).playsSounds, row.playsSounds) << row.name;
}

TEST(NotificationPlan, KnowsWhoDrawsTheButtonsThatItTakes) {
    for (const char* name : {"Xfce Notify Daemon", "Notification Daemon", "gnome-shell", "Plasma", ""}) {
        EXPECT_TRUE(notificationServer(name, {"body", "actions"}).drawsButtons) << name;
        EXPECT_FALSE(notificationServer(name, {"body"}).drawsButtons) << name;
        EXPECT_FALSE(notificationServer(name, {"body"}).takesActions) << name;
    }
    for (const char* name : {"dunst", "mako"}) {
        EXPECT_FALSE(notificationServer(name, {"body", "actions"}).drawsButtons) << name;
        EXPECT_TRUE(notificationServer(name, {"body", "actions"}).takesActions) << name;
    }
}

TEST(NotificationPlan, NamesTheSoundOrPlaysItOrKeepsSilent) {
    const NotificationServer gnome = notificationServer("gnome-shell", {"sound"});
    const NotificationServer dunst = notificationServer("dunst", {});
    using Text = std::optional<std::string>;
    struct {
        const char* what;
        const NotificationServer& server;
        std::optional<bool> doNotDisturb;
        Text sound, soundName, soundFile;
        bool suppressSound, playsSound;
    } const rows[] = {
        {"a file", gnome, {}, "Glass", {}, "/opt/sounds/Glass.oga", false, false},
        {"the desktop's own", gnome, {}, "default", "message-new-instant", {}, false, false},
        {"without a file", gnome, {}, "Nowhere", "Nowhere", {}, false, false},
        {"a path that means nothing to others", gnome, {}, "Relative", "Relative", {}, false, false},
        {"the daemon minds do-not-disturb", gnome, true, "Glass", {}, "/opt/sounds/Glass.oga", false, false},
        {"silent", gnome, {}, {}, {}, {}, true, false},
        {"ours", dunst, false, "Glass", {}, {}, true, true},
        {"ours where nothing is told", dunst, {}, "default", {}, {}, true, true},
        {"ours, but not now", dunst, true, "Glass", {}, {}, true, false},
        {"silent as well", dunst, false, {}, {}, {}, true, false},
        {"a daemon that tells nothing", {}, {}, "Glass", {}, {}, true, true},
    };
    for (const auto& row : rows) {
        const NotificationPlan made = plan(row.server, row.doNotDisturb, request(row.sound));
        EXPECT_EQ(made.soundName, row.soundName) << row.what;
        EXPECT_EQ(made.soundFile, row.soundFile) << row.what;
        EXPECT_EQ(made.suppressSound, row.suppressSound) << row.what;
        EXPECT_EQ(made.playsSound, row.playsSound) << row.what;
    }
}

TEST(NotificationPlan, InsistsOnlyOnALowBatteryAndOnlyWhereTheUserIsNotToBeLeftAlone) {
    using Urgency = NotificationUrgency;
    struct {
        const char* identifier;
        std::optional<bool> doNotDisturb;
        Urgency urgency;
    } const rows[] = {
        {"low", false, Urgency::critical},    {"low", true, Urgency::normal},
        {"low", {}, Urgency::normal},         {"chargeLimit", false, Urgency::normal},
        {"tooLong", false, Urgency::normal},  {"health", false, Urgency::normal},
        {"lowPower", false, Urgency::normal}, {"lowPower", {}, Urgency::normal},
        {"", false, Urgency::normal},
    };
    for (const auto& row : rows) {
        Request asked = request();
        asked.identifier = row.identifier;
        EXPECT_EQ(plan({}, row.doNotDisturb, asked).urgency, row.urgency) << row.identifier;
    }
}

TEST(NotificationPlan, WritesTheBodyAsTheDaemonReadsIt) {
    const std::string plain = "for <b>long</b> & longer";
    EXPECT_EQ(plan(notificationServer("x", {"body"}), {}, request()).body, plain);
    EXPECT_EQ(plan({}, {}, request()).body, plain);
    EXPECT_EQ(plan(notificationServer("x", {"body-markup"}), {}, request()).body,
              "for &lt;b&gt;long&lt;/b&gt; &amp; longer");
}

TEST(NotificationPlan, SendsButtonsToADaemonThatTakesThem) {
    EXPECT_EQ(plan(notificationServer("x", {"actions"}), {}, request()).actions, (Strings{"SNOOZE", "Snooze 1 hour"}));
    EXPECT_EQ(plan(notificationServer("x", {"action-icons"}), {}, request()).actions, Strings());
    EXPECT_EQ(plan({}, {}, request()).actions, Strings());
}

TEST(NotificationPlan, LetsTheFirstOfSeveralRequestsBeHeard) {
    const RequestOrder first{.turn = 7, .number = 0};
    const RequestOrder second{.turn = 7, .number = 1};
    const RequestOrder later{.turn = 8, .number = 0};
    EXPECT_FALSE(mayCutOff(second, first));
    EXPECT_TRUE(mayCutOff(first, second)) << "which was only shown earlier";
    EXPECT_TRUE(mayCutOff(first, first)) << "replaced by itself";
    EXPECT_TRUE(mayCutOff(later, second));
    EXPECT_TRUE(mayCutOff(first, {}));
}
