// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the settings form consists of, from the top, apart from how it is drawn. Every control is bound to a key of the
/// preferences; one with an `enabledBy` can be operated only while that switch is on.
struct SettingsControl {
    /// A switch; a number with arrows; a choice of sounds; a time of day.
    enum class Kind { toggle, stepper, sound, time };

    Kind kind = Kind::toggle;
    std::string key;
    std::string label;           ///< of a stepper: what stands before the number
    std::string labelEnd = {};   ///< of a stepper: what stands behind it
    std::int64_t least = 0;      ///< of a stepper
    std::int64_t most = 0;       ///< of a stepper
    std::string enabledBy = {};  ///< the key of a switch, or empty
    bool asksPermission = false; ///< switching it on means that the user wants to be notified
};

/// Controls that stand together, from the top.
struct SettingsSection {
    std::string header; ///< may be empty
    std::vector<SettingsControl> controls;
};

/// The sections that consist of preferences. Those of login, history and notes follow them.
const std::vector<SettingsSection>& settingsSections();

/// "Alert when charging reaches 80%".
std::string stepperLabel(const SettingsControl& stepper, std::int64_t value);

/// A choice of sound: how it is shown, and how it is stored.
struct SoundChoice {
    std::string_view shown;
    std::string_view stored;
};

/// "Default", "None" and the sounds by name.
const std::vector<SoundChoice>& soundChoices();

/// Whether choosing it lets it be heard.
bool isHeardWhenChosen(std::string_view stored);

/// A time of day out of minutes since midnight.
struct TimeOfDayChoice {
    int hour = 0;
    int minute = 0;
    bool operator==(const TimeOfDayChoice&) const = default;
};

/// Empty for minutes that no day has.
std::optional<TimeOfDayChoice> timeOfMinutes(std::int64_t minutes);
