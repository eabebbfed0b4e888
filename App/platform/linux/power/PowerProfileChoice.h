// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

/// Decides which source to believe on whether the machine saves power.
struct PowerProfileChoice {
    static constexpr std::string_view newName = "org.freedesktop.UPower.PowerProfiles";
    static constexpr std::string_view oldName = "net.hadess.PowerProfiles";

    /// What a daemon has answered.
    struct Answer {
        std::string profile;
        bool hasLeft = false; ///< it has left the bus since, perhaps only to restart
    };

    std::map<std::string, Answer, std::less<>> daemons; ///< by bus name
    std::optional<std::string> firmware;                ///< content of platform_profile

    /// By the daemon's answer under its new name, else under its old one, else by the last answer of one that has left,
    /// else by the firmware; false without any answer.
    bool isLowPower() const;
};
