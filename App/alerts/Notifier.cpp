// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/Notifier.h"

#include "alerts/Prefs.h"
#include "platform/Bundle.h"
#include "platform/Dialogs.h"
#include "platform/MainLoop.h"

#include <optional>

namespace {

constexpr const char* alertCategory = "VL_ALERT";
constexpr const char* snoozeAction = "SNOOZE";

std::optional<std::string> sound(AlertKind kind, const Prefs& prefs) {
    const auto chosen = prefs.sounds.find(kind);
    if (chosen == prefs.sounds.end())
        return "default";
    return chosen->second == "none" ? std::nullopt : std::optional(chosen->second);
}

} // namespace

bool notificationsAvailable(const Bundle& bundle) {
    return bundle.identifier() && (bundle.location().extension() == ".app" || bundle.isInstalled());
}

Notifier::Notifier(NotificationCenter& center, const Bundle& bundle, Dialogs& dialogs, MainLoop& mainLoop)
    : center_(center)
    , bundle_(bundle)
    , dialogs_(dialogs)
    , mainLoop_(mainLoop) {}

Notifier::~Notifier() {
    center_.setDelegate(nullptr);
}

void Notifier::setup() {
    if (!available())
        return;
    center_.setDelegate(this);
    center_.setNotificationCategories(
        {{.identifier = alertCategory, .actions = {{.identifier = snoozeAction, .title = "Snooze 1 hour"}}}});
}

void Notifier::requestIfNeeded() {
    if (!available())
        return;
    center_.getAuthorizationStatus([&loop = mainLoop_, explain = lifetime_.guard([this] { explainAndRequest(); })](
                                       NotificationCenter::AuthorizationStatus status) {
        if (status == NotificationCenter::AuthorizationStatus::notDetermined)
            loop.async(explain);
    });
}

void Notifier::explainAndRequest() {
    dialogs_.bringToFront();
    const std::optional<std::size_t> button = dialogs_.runAlert(
        {.message = "Allow notifications?",
         .informativeText =
             "Velmora uses notifications to remind you to unplug at your chosen charge level, when the battery is low, "
             "and when you have been plugged in too long. macOS will ask for permission next.",
         .buttons = {"Continue", "Not Now"}});
    if (button == 0)
        center_.requestAuthorization({.alert = true, .sound = true});
}

void Notifier::deliver(const PendingAlert& alert, const Prefs& prefs) {
    if (!available())
        return;
    center_.add({.identifier = std::string(rawValue(alert.kind)),
                 .title = alert.title,
                 .body = alert.body,
                 .categoryIdentifier = alertCategory,
                 .sound = sound(alert.kind, prefs)});
}

void Notifier::withdraw(const std::vector<AlertKind>& kinds) {
    if (!available())
        return;
    std::vector<std::string> identifiers;
    identifiers.reserve(kinds.size());
    for (const AlertKind kind : kinds)
        identifiers.emplace_back(rawValue(kind));
    center_.removeDelivered(identifiers);
}

NotificationCenter::Options Notifier::willPresent(const NotificationCenter::Request& /*request*/) {
    return {.alert = true, .sound = true};
}

void Notifier::didReceive(const std::string& actionIdentifier, std::function<void()> completion) {
    // This may be any thread; the model lives on the main one.
    if (actionIdentifier == snoozeAction)
        mainLoop_.async(lifetime_.guard([this] {
            if (onSnooze)
                onSnooze();
        }));
    completion();
}
