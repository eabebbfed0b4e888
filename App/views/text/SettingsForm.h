// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A control of the settings form, apart from how it is drawn. Every control is bound to a preferences key; one with an
/// `enabledBy` is enabled only while that switch is on.
struct SettingsControl {
    /// A switch; a number with arrows; a choice of sounds; a time of day.
    enum class Kind { toggle, stepper, sound, time };

    Kind kind = Kind::toggle;
    std::string key;
    std::string label;           ///< of a stepper: the text before the number
    std::string labelEnd = {};   ///< of a stepper: the text after it
    std::int64_t least = 0;      ///< of a stepper
    std::int64_t most = 0;       ///< of a stepper
    std::string enabledBy = {};  ///< the key of a switch, or empty
    bool asksPermission = false; ///< switching it on means that the user wants to be notified
};

/// A group of controls, from the top.
struct SettingsSection {
    std::string header; ///< may be empty
    std::vector<SettingsControl> controls;
    bool needsFirmwareLimit = false; ///< shown only where the firmware of the machine has a charge limit
};

/// The sections with preferences. Those of login, history and notes follow them.
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

/// Whether choosing this sound plays it.
bool isHeardWhenChosen(std::string_view stored);

/// A time of day, made from minutes since midnight.
struct TimeOfDayChoice {
    int hour = 0;
    int minute = 0;
    bool operator==(const TimeOfDayChoice&) const = default;
};

/// Empty for minutes that are not within a day.
std::optional<TimeOfDayChoice> timeOfMinutes(std::int64_t minutes);
