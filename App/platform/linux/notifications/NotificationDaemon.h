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

/// Whoever owns the name org.freedesktop.Notifications. It may be absent, be started by our call, be replaced at any
/// time and never answer; nothing here waits for it, and its errors are silent.
class NotificationDaemon final : public QObject {
    Q_OBJECT

public:
    /// How long an answer is waited for.
    struct Timeouts {
        /// What the daemon can do, from when it is there; after that it is treated as one that can do nothing.
        std::chrono::milliseconds abilities = std::chrono::seconds(3);
        /// Do-not-disturb; after that it is not known.
        std::chrono::milliseconds doNotDisturb = std::chrono::seconds(1);
        /// A notification: long, because one that is shown after we gave up can neither be replaced nor withdrawn.
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

    /// True when `server` tells as much as will be known for now. Otherwise the daemon is asked, or started and asked,
    /// and `prepared` or `absent` follows.
    bool prepare();

    /// What the present daemon can do; nothing until it has answered.
    const NotificationServer& server() const { return server_; }

    /// Asks whether the user wants to be left alone; the answer is empty where the desktop does not tell. It comes
    /// later.
    void askDoNotDisturb(std::function<void(std::optional<bool>)> answer);

    /// Shows a notification in the place of the one with the id `replaced`, 0 for none. Gives its id later, or nothing
    /// when it failed or the daemon that showed it is gone.
    void notify(const Notification& notification, uint replaced, std::function<void(std::optional<uint>)> answer);

    /// Takes a notification of the present daemon's off the screen; one that is not there any more is no error.
    void close(uint id);

Q_SIGNALS:
    /// `server` tells as much as will be known for now.
    void prepared();
    /// There is no daemon, and none could be started.
    void absent();
    /// Another daemon or none; ids of the former one mean nothing any more.
    void replaced();
    /// It is off the screen, whoever has closed it.
    void closed(uint id);
    /// The user pressed the button with this key.
    void actionInvoked(uint id, const QString& key);

private Q_SLOTS:
    void notificationClosed(uint id, uint reason, const QDBusMessage& message);
    void actionInvokedBy(uint id, const QString& key, const QDBusMessage& message);

private:
    /// How far the question what the daemon can do has come.
    enum class Asking { notYet, waiting, done };

    QDBusConnection bus_;
    Timeouts timeouts_;
    QDBusServiceWatcher watcher_;
    QString owner_;        ///< the unique name of the connection; empty while there is none
    int ownerChanges_ = 0; ///< as far as we were told
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
