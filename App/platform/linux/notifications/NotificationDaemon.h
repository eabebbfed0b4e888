// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/notifications/NotificationPlan.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <optional>

/// The owner of the name org.freedesktop.Notifications. It may be absent, be started by our call, be replaced at any
/// time, or never answer; nothing here blocks on it, and its errors are silent.
class NotificationDaemon final : public QObject {
    Q_OBJECT

public:
    /// How long to wait for an answer.
    struct Timeouts {
        /// To what the daemon can do, counted from when it is there; after that it is treated as one that can do
        /// nothing.
        std::chrono::milliseconds abilities = std::chrono::seconds(3);
        /// To do-not-disturb; after that it is unknown.
        std::chrono::milliseconds doNotDisturb = std::chrono::seconds(1);
        /// To a notification: long, because one that appears after we gave up can be neither replaced nor withdrawn.
        /// Also for a daemon to start.
        std::chrono::milliseconds notify = std::chrono::seconds(30);
    };

    /// What is sent to be shown.
    struct Notification {
        QString icon; ///< a name, or the absolute path of a file
        QString summary;
        QString body;
        QStringList actions;
        QVariantMap hints;
    };

    NotificationDaemon(QDBusConnection bus, Timeouts timeouts);

    /// Starts to follow the daemon.
    void start();

    /// Whether `server` is as complete as it will be for now. If not, the daemon is asked, after being started if
    /// necessary, and `prepared` or `absent` follows.
    bool prepare();

    /// What the current daemon can do; nothing until it has answered.
    const NotificationServer& server() const { return server_; }

    /// Asks whether the user wants to be left alone; the answer comes later and is empty if the desktop does not tell.
    void askDoNotDisturb(std::function<void(std::optional<bool>)> answer);

    /// Shows a notification, replacing the one with the id `replaced` unless that is 0. Its id comes later; empty if it
    /// failed or the daemon that showed it is gone.
    void notify(const Notification& notification, uint replaced, std::function<void(std::optional<uint>)> answer);

    /// Takes a notification of the current daemon off the screen; no error if it is gone already.
    void close(uint id);

Q_SIGNALS:
    /// `server` is as complete as it will be for now.
    void prepared();
    /// There is no daemon and none could be started.
    void absent();
    /// Another daemon owns the name now, or none does; the former one's ids are void.
    void replaced();
    /// It is off the screen, whoever closed it.
    void closed(uint id);
    /// The user pressed the button with this key.
    void actionInvoked(uint id, const QString& key);

private Q_SLOTS:
    void notificationClosed(uint id, uint reason, const QDBusMessage& message);
    void actionInvokedBy(uint id, const QString& key, const QDBusMessage& message);

private:
    /// How far we are with asking what the daemon can do.
    enum class Asking { notYet, waiting, done };

    QDBusConnection bus_;
    Timeouts timeouts_;
    QDBusServiceWatcher watcher_;
    QString owner_;        ///< its unique name; empty while there is no daemon
    int ownerChanges_ = 0; ///< how often the owner changed, as far as we were told
    NotificationServer server_;
    Asking asking_ = Asking::notYet;
    bool mayAskAgain_ = false;
    int question_ = 0; ///< answers to earlier questions are stale

    void setOwner(const QString& owner);
    void askAbilities();
    void askInformation(int question);
    void askCapabilities(int question, const QString& name);
    void stopWaitingFor(int question);
    void settle(int question, const QString& name, const QStringList& capabilities);
    void send(const Notification& notification, uint replaced, int retries,
              std::function<void(std::optional<uint>)> answer);
};
