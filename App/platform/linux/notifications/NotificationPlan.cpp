// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/NotificationPlan.h"

#include <algorithm>

namespace {

bool contains(const std::vector<std::string>& texts, std::string_view text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// Reminders are normal: the user switched them on, and with "low" GNOME shows no banner and Plasma keeps no history.
/// Only a low battery cannot wait: critical, it stays until it is seen. But critical also breaks through do-not-disturb
/// and full screen, so we use it only if the desktop says that do-not-disturb is off; if the desktop does not tell, it
/// may be on.
NotificationUrgency urgency(std::string_view identifier, std::optional<bool> doNotDisturb) {
    const bool mayInsist = doNotDisturb.has_value() && !*doNotDisturb;
    return identifier == "low" && mayInsist ? NotificationUrgency::critical : NotificationUrgency::normal;
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            result += character;
        }
    }
    return result;
}

void planSound(NotificationPlan& plan, const NotificationServer& server, bool doNotDisturb,
               const std::optional<std::string>& sound, const SoundFile& soundFile) {
    // Without this hint some daemons play a sound of their own.
    plan.suppressSound = !sound || !server.playsSounds;
    if (!sound)
        return;
    if (!server.playsSounds) {
        plan.playsSound = !doNotDisturb;
    } else if (*sound == "default") {
        plan.soundName = "message-new-instant";
    } else if (const auto file = soundFile(*sound); file && file->is_absolute()) {
        // QUIRK: GNOME ignores the file if there is a name, and its sound theme has none of our names. It plays a sound
        // again for a replacement only if that has a file.
        plan.soundFile = file->string();
    } else {
        plan.soundName = *sound;
    }
}

} // namespace

NotificationServer notificationServer(std::string_view name, const std::vector<std::string>& capabilities) {
    // QUIRK: the capability "sound" alone says little: MATE plays files only, Cinnamon its own sound, and both at any
    // time. GNOME has always played sounds, whether it says so or not; Plasma plays them if it says so.
    const bool playsSounds = name == "gnome-shell" || (name == "Plasma" && contains(capabilities, "sound"));
    // QUIRK: dunst and mako take buttons, and draw none; the user has to know a click or a command for them.
    const bool takesActions = contains(capabilities, "actions");
    return {.takesActions = takesActions,
            .drawsButtons = takesActions && name != "dunst" && name != "mako",
            .parsesBody = contains(capabilities, "body-markup"),
            .playsSounds = playsSounds,
            .wantsImage = name == "Budgie Notification Server", // QUIRK: it draws an envelope otherwise
            .doNotDisturb = doNotDisturbSource(name)};
}

bool mayCutOff(const RequestOrder& coming, const RequestOrder& sounding) {
    return coming.turn != sounding.turn || coming <= sounding;
}

NotificationPlan planNotification(const NotificationServer& server, std::optional<bool> doNotDisturb,
                                  const NotificationCenter::Request& request,
                                  const std::vector<NotificationCenter::Action>& actions, const SoundFile& soundFile) {
    NotificationPlan plan;
    plan.urgency = urgency(request.identifier, doNotDisturb);
    plan.body = server.parsesBody ? escaped(request.body) : request.body;
    if (server.takesActions) {
        for (const auto& action : actions) {
            plan.actions.push_back(action.identifier);
            plan.actions.push_back(action.title);
        }
    }
    planSound(plan, server, doNotDisturb.value_or(false), request.sound, soundFile);
    return plan;
}
