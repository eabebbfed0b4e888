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

/// Notifications by the Desktop Notifications Specification, org.freedesktop.Notifications. For each identifier at most
/// one request is on its way to the daemon and one, the latest, waits for it: so the second can replace the first, and
/// nothing piles up when the daemon does not answer.
class FreedesktopNotifications final : public QObject, public NotificationCenter {
    Q_OBJECT

public:
    /// `icon` is the absolute path of the application's icon. If it is empty, the desktop looks for an icon named like
    /// our desktop entry, which it finds only if the program is installed.
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
    /// What we know about one identifier.
    struct Entry {
        std::optional<Request> next; ///< to be sent as soon as possible
        RequestOrder order;          ///< of that
        bool isBusy = false;         ///< it is being sent
        bool isWithdrawn = false;    ///< what is being sent is to be taken off the screen
        uint id = 0;                 ///< of the one on the screen; 0 for none
        std::vector<Action> actions; ///< its buttons, until one is pressed
        std::vector<Action> coming;  ///< the buttons of the one being sent
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
    bool isAsking_ = false; ///< for do-not-disturb
    RequestOrder last_;
    bool isTogether_ = false; ///< the next request comes together with the last one
    RequestOrder sounding_;   ///< of the request whose sound was played last

    void sendWaiting();
    void dropAll();
    void forgetIds();
    void send(const std::string& identifier, std::optional<bool> doNotDisturb);
    void sent(const std::string& identifier, const RequestOrder& order, std::optional<uint> id,
              const std::optional<std::string>& ownSound, bool hasButtons);
    void tidy(const std::string& identifier);
    RequestOrder nextOrder();
    void play(const RequestOrder& order, const std::string& sound);
    void closed(uint id);
    void actionInvoked(uint id, const QString& key);
    std::vector<Action> actionsOf(const std::string& category) const;
    std::map<std::string, Entry>::iterator find(uint id);
};
