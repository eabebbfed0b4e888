// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/linux/notifications/NotificationConsent.h"
#include "platform/linux/notifications/NotificationDaemon.h"
#include "platform/linux/notifications/NotificationPlan.h"

#include <QObject>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

class MainLoop;
class SystemSounds;

/// Notifications by the desktop notifications protocol, org.freedesktop.Notifications. Of each identifier at most one
/// is on its way to the daemon and one, the latest, waits for that: so the second can take the place of the first, and
/// nothing piles up before a daemon that does not answer.
class FreedesktopNotifications final : public QObject, public NotificationCenter {
    Q_OBJECT

public:
    /// `icon` is the absolute path of the application's icon; empty: the desktop looks for one that is named as our
    /// desktop entry, which it has only where the program is installed.
    FreedesktopNotifications(QDBusConnection bus, MainLoop& loop, SystemSounds& sounds, SoundFile soundFile,
                             NotificationConsent consent, const std::filesystem::path& icon,
                             NotificationDaemon::Timeouts timeouts = {});

    /// Starts to follow the daemon.
    void start() { daemon_.start(); }

    void setDelegate(Delegate* delegate) override { delegate_ = delegate; }
    void setNotificationCategories(std::vector<Category> categories) override { categories_ = std::move(categories); }
    void getAuthorizationStatus(std::function<void(AuthorizationStatus)> answer) override;
    void requestAuthorization(Options options) override;
    void add(Request request) override;
    void removeDelivered(const std::vector<std::string>& identifiers) override;

private:
    /// What is known of one identifier.
    struct Entry {
        std::optional<Request> next; ///< to be sent as soon as that is possible
        bool isBusy = false;         ///< a question about it, or it itself, is on its way
        bool isWithdrawn = false;    ///< what is on its way is to be taken off the screen
        uint id = 0;                 ///< of what is on the screen; 0 for nothing
        std::vector<Action> actions; ///< its buttons, until one was pressed
        std::vector<Action> coming;  ///< the buttons of what is on its way
    };

    MainLoop& loop_;
    SystemSounds& sounds_;
    SoundFile soundFile_;
    NotificationConsent consent_;
    QString icon_;
    NotificationDaemon daemon_;
    Delegate* delegate_ = nullptr;
    std::vector<Category> categories_;
    std::map<std::string, Entry> entries_;

    void sendAll();
    void dropAll();
    void forgetIds();
    void sendNext(const std::string& identifier);
    void send(const std::string& identifier, std::optional<bool> doNotDisturb);
    void sent(const std::string& identifier, std::optional<uint> id, const std::optional<std::string>& ownSound);
    void tidy(const std::string& identifier);
    void play(const std::string& sound);
    void closed(uint id);
    void actionInvoked(uint id, const QString& key);
    std::vector<Action> actionsOf(const std::string& category) const;
    std::map<std::string, Entry>::iterator find(uint id);
};
