// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/AlertKind.h"
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

/// Delivers reminders as desktop notifications with a button that snoozes them. Outside an application bundle there are
/// no notifications, and everything here does nothing. Called on the main thread.
class Notifier final : private NotificationCenter::Delegate {
public:
    Notifier(NotificationCenter& center, const Bundle& bundle, Dialogs& dialogs, MainLoop& mainLoop);
    ~Notifier() override;
    Notifier(const Notifier&) = delete;
    Notifier& operator=(const Notifier&) = delete;

    /// Called on the main thread when the user presses the snooze button.
    std::function<void()> onSnooze;

    /// Whether the program runs as an application bundle: from a folder whose name ends in ".app", with an identifier,
    /// or as it is installed below a prefix.
    bool available() const;

    /// Gets ready to deliver. Called once.
    void setup();

    /// Asks for the permission to notify, after an explanation, if that was never decided. Comes back at once.
    void requestIfNeeded();

    /// Shows the reminder; an earlier one of its kind that is still shown gives way. The sound is that of the
    /// preferences.
    void deliver(const PendingAlert& alert, const Prefs& prefs);

    /// Takes reminders of these kinds off the screen.
    void withdraw(const std::vector<AlertKind>& kinds);

private:
    NotificationCenter& center_;
    const Bundle& bundle_;
    Dialogs& dialogs_;
    MainLoop& mainLoop_;
    Lifetime lifetime_;

    NotificationCenter::Options willPresent(const NotificationCenter::Request& request) override;
    void didReceive(const std::string& actionIdentifier, std::function<void()> completion) override;
    void explainAndRequest();
};
