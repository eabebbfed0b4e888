// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/Notifier.h"

#include "alerts/Prefs.h"
#include "platform/Bundle.h"
#include "platform/Dialogs.h"
#include "platform/MainLoop.h"

#include <optional>
#include <utility>

namespace {

constexpr const char* alertCategory = "VL_ALERT";
constexpr const char* lowPowerCategory = "VL_LOW_POWER";
constexpr const char* snoozeAction = "SNOOZE";
constexpr const char* turnOnAction = "TURN_ON";

template <class Kind>
std::vector<std::string> identifiersOf(const std::vector<Kind>& kinds) {
    std::vector<std::string> identifiers;
    identifiers.reserve(kinds.size());
    for (const Kind kind : kinds)
        identifiers.emplace_back(rawValue(kind));
    return identifiers;
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
    const NotificationCenter::Action snooze{.identifier = snoozeAction, .title = "Snooze 1 hour"};
    center_.setNotificationCategories(
        {{.identifier = alertCategory, .actions = {snooze}},
         {.identifier = lowPowerCategory, .actions = {snooze, {.identifier = turnOnAction, .title = "Turn on"}}}});
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

void Notifier::deliver(const PendingAlert& alert, const Prefs& prefs, bool canTurnOn) {
    const auto chosen = prefs.sounds.find(alert.kind);
    show({.identifier = std::string(rawValue(alert.kind)),
          .title = alert.title,
          .body = alert.body,
          .categoryIdentifier = alert.kind == AlertKind::lowPower && canTurnOn ? lowPowerCategory : alertCategory,
          .sound = {}},
         chosen == prefs.sounds.end() ? "default" : chosen->second);
}

void Notifier::deliver(const LimitAlert& alert, const Prefs& prefs) {
    show({.identifier = std::string(rawValue(alert.kind)),
          .title = alert.title,
          .body = alert.body,
          .categoryIdentifier = alertCategory,
          .sound = {}},
         prefs.firmwareLimitSound);
}

void Notifier::show(NotificationCenter::Request request, const std::string& sound) {
    if (!available())
        return;
    if (sound != "none")
        request.sound = sound;
    center_.add(std::move(request));
}

void Notifier::withdraw(const std::vector<AlertKind>& kinds) {
    remove(identifiersOf(kinds));
}

void Notifier::withdraw(const std::vector<LimitAlertKind>& kinds) {
    remove(identifiersOf(kinds));
}

void Notifier::remove(std::vector<std::string> identifiers) {
    if (available() && !identifiers.empty())
        center_.removeDelivered(identifiers);
}

NotificationCenter::Options Notifier::willPresent(const NotificationCenter::Request& /*request*/) {
    return {.alert = true, .sound = true};
}

void Notifier::didReceive(const std::string& actionIdentifier, std::function<void()> completion) {
    if (actionIdentifier == snoozeAction)
        callLater(&Notifier::onSnooze);
    else if (actionIdentifier == turnOnAction)
        callLater(&Notifier::onTurnOn);
    completion();
}

void Notifier::didPresentWithoutButtons(const std::string& identifier) {
    if (identifier == rawValue(AlertKind::lowPower))
        callLater(&Notifier::onSuggestedWithoutButton);
}

void Notifier::callLater(std::function<void()> Notifier::*callback) {
    // The centre may call on any thread; the model lives on the main one.
    mainLoop_.async(lifetime_.guard([this, callback] {
        if (this->*callback)
            (this->*callback)();
    }));
}
