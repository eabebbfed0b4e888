// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SystemSounds.h"
#include "platform/linux/notifications/FreedesktopNotifications.h"
#include "platform/linux/session/QtMainLoop.h"
#include "support/FakeFiles.h"
#include "support/FakeNotificationDaemon.h"
#include "support/FakeSystemSounds.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/// Records the actions that the user pressed, and completes at once.
class RecordingDelegate final : public NotificationCenter::Delegate {
public:
    std::vector<std::string> received;
    std::vector<std::string> presented;
    std::vector<std::string> withoutButtons;
    NotificationCenter::Options options{.alert = true, .sound = true, .badge = false, .list = false};
    std::function<void()> onReceive;

    NotificationCenter::Options willPresent(const NotificationCenter::Request& request) override {
        presented.push_back(request.identifier);
        return options;
    }
    void didReceive(const std::string& action, std::function<void()> completion) override {
        received.push_back(action);
        if (onReceive)
            onReceive();
        completion();
    }
    void didPresentWithoutButtons(const std::string& identifier) override { withoutButtons.push_back(identifier); }
};

/// The adapter on a bus of its own, with a delegate and the snooze button.
class NotificationsFixture : public testing::Test {
protected:
    using Manner = FakeNotificationDaemon::Manner;
    using Request = NotificationCenter::Request;

    PrivateBus bus;
    QtMainLoop loop;
    FakeSystemSounds sounds;
    FakeFiles files;
    RecordingDelegate delegate;
    QDBusConnection connection = QDBusConnection::connectToBus(bus.address(), QStringLiteral("program"));
    FakeNotificationDaemon daemon{bus, QStringLiteral("daemon")};
    std::unique_ptr<FreedesktopNotifications> center;

    ~NotificationsFixture() override {
        center.reset();
        connection = QDBusConnection(QStringLiteral("none"));
        QDBusConnection::disconnectFromBus(QStringLiteral("program"));
    }

    /// An answer that comes at all comes long before these time out.
    void start(NotificationDaemon::Timeouts timeouts = {.abilities = std::chrono::seconds(20),
                                                        .doNotDisturb = std::chrono::seconds(20),
                                                        .notify = std::chrono::seconds(20)}) {
        const auto soundFile = [](std::string_view name) {
            return std::optional(std::filesystem::path("/sounds") / name);
        };
        center = std::make_unique<FreedesktopNotifications>(
            connection, loop, sounds, soundFile, NotificationConsent(files, "/state"), "/icon.svg", timeouts);
        center->setNotificationCategories({{"OTHER", {}}, {"VL_ALERT", {{"SNOOZE", "Snooze 1 hour"}}}});
        center->setDelegate(&delegate);
        center->start();
    }

    static Request request(const std::string& identifier, const std::string& title = "Title",
                           std::optional<std::string> sound = std::nullopt) {
        return {.identifier = identifier,
                .title = title,
                .body = "Body",
                .categoryIdentifier = "VL_ALERT",
                .sound = std::move(sound)};
    }

    /// Waits for all messages between the adapter and the daemon, and for those that follow from them.
    void settle() {
        // After a round trip the bus has passed on all earlier messages, and the next turn of the event loop handles
        // the received ones. Showing one notification takes four calls and replies.
        for (int round = 0; round < 8; ++round) {
            roundTrip(connection);
            daemon.roundTrip();
            QCoreApplication::processEvents();
        }
    }

    static void roundTrip(const QDBusConnection& one) {
        one.call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                QStringLiteral("/org/freedesktop/DBus"),
                                                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
    }

    void add(const Request& asked) {
        center->add(asked);
        settle();
    }
};
