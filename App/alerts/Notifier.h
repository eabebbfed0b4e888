// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/AlertKind.h"
#include "alerts/LimitAlert.h"
#include "alerts/PendingAlert.h"
#include "platform/Lifetime.h"
#include "platform/NotificationCenter.h"

#include <functional>
#include <string>
#include <vector>

class Bundle;
class MainLoop;
class Dialogs;
struct Prefs;

/// Whether the program may show notifications: it runs as an application bundle, which has an identifier and is in a
/// folder whose name ends in ".app" or is installed below a prefix.
bool notificationsAvailable(const Bundle& bundle);

/// Delivers reminders as desktop notifications with a button that snoozes them. The suggestion of Low Power Mode can
/// have a second one that turns the mode on. Outside an application bundle there are no notifications, and every call
/// does nothing. To be called on the main thread.
class Notifier final : private NotificationCenter::Delegate {
public:
    Notifier(NotificationCenter& center, const Bundle& bundle, Dialogs& dialogs, MainLoop& mainLoop);
    ~Notifier() override;
    Notifier(const Notifier&) = delete;
    Notifier& operator=(const Notifier&) = delete;

    /// Called on the main thread when the user presses the snooze button.
    std::function<void()> onSnooze;

    /// Called on the main thread when the user presses the button that turns Low Power Mode on.
    std::function<void()> onTurnOn;

    /// Called on the main thread when the suggestion of Low Power Mode is shown where there can be no button.
    std::function<void()> onSuggestedWithoutButton;

    /// Whether the program runs as an application bundle.
    bool available() const { return notificationsAvailable(bundle_); }

    /// Gets ready to deliver. Called once.
    void setup();

    /// Explains, then asks for permission to notify, if that was never decided. Returns at once.
    void requestIfNeeded();

    /// Shows the reminder, replacing an earlier one of its kind that is still shown. The sound is the one set in the
    /// preferences. With `canTurnOn` a suggestion of Low Power Mode has the button for that.
    void deliver(const PendingAlert& alert, const Prefs& prefs, bool canTurnOn = false);

    void deliver(const LimitAlert& alert, const Prefs& prefs);

    /// Removes reminders of these kinds from the screen.
    void withdraw(const std::vector<AlertKind>& kinds);
    void withdraw(const std::vector<LimitAlertKind>& kinds);

private:
    NotificationCenter& center_;
    const Bundle& bundle_;
    Dialogs& dialogs_;
    MainLoop& mainLoop_;
    Lifetime lifetime_;

    NotificationCenter::Options willPresent(const NotificationCenter::Request& request) override;
    void didReceive(const std::string& actionIdentifier, std::function<void()> completion) override;
    void didPresentWithoutButtons(const std::string& identifier) override;
    void callLater(std::function<void()> Notifier::*callback);
    void explainAndRequest();
    void show(NotificationCenter::Request request, const std::string& sound);
    void remove(std::vector<std::string> identifiers);
};
