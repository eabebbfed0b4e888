// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/linux/notifications/DoNotDisturb.h"

#include <compare>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a notification daemon can do, as far as it matters here. The default is one that has not answered.
struct NotificationServer {
    bool takesActions = false; ///< it takes buttons; not every such daemon draws them
    bool drawsButtons = false; ///< and it draws them
    bool parsesBody = false;   ///< the body is read as markup
    bool playsSounds = false;  ///< it plays any sound we name, respecting its own do-not-disturb
    bool wantsImage = false;   ///< it shows a file only as the notification's image, not as the program's icon
    std::optional<DoNotDisturbSource> doNotDisturb;
    bool operator==(const NotificationServer&) const = default;
};

/// What a daemon of this name and with these capabilities can do.
NotificationServer notificationServer(std::string_view name, const std::vector<std::string>& capabilities);

/// The values of the protocol's "urgency" hint.
enum class NotificationUrgency : std::uint8_t { low = 0, normal = 1, critical = 2 };

/// How to send a request to the daemon.
struct NotificationPlan {
    NotificationUrgency urgency = NotificationUrgency::normal;
    std::string body;
    std::vector<std::string> actions;     ///< identifier and title in turn
    std::optional<std::string> soundName; ///< hint "sound-name", of the desktop's sound theme
    std::optional<std::string> soundFile; ///< hint "sound-file", an absolute path
    bool suppressSound = false;           ///< hint "suppress-sound"
    bool playsSound = false;              ///< we play the sound ourselves once the notification is shown
    bool operator==(const NotificationPlan&) const = default;
};

/// The file of a named sound; empty if there is none.
using SoundFile = std::function<std::optional<std::filesystem::path>(std::string_view name)>;

/// When a request was made: in which turn of the main loop, and as which one in that turn.
struct RequestOrder {
    unsigned long turn = 0;
    unsigned long number = 0;
    auto operator<=>(const RequestOrder&) const = default;
};

/// Whether the sound of a request is played although it cuts off that of `sounding`. Of several reminders at once the
/// first that was asked for is the most urgent, and its sound is the one to be heard.
bool mayCutOff(const RequestOrder& coming, const RequestOrder& sounding);

/// Plans a request with the buttons of its category. `doNotDisturb` is empty if the desktop does not tell.
NotificationPlan planNotification(const NotificationServer& server, std::optional<bool> doNotDisturb,
                                  const NotificationCenter::Request& request,
                                  const std::vector<NotificationCenter::Action>& actions, const SoundFile& soundFile);
