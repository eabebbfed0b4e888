// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/SettingsForm.h"

#include "alerts/SoundNames.h"

#include <utility>

namespace {

using Control = SettingsControl;

Control alertSwitch(std::string label, std::string key) {
    return {.kind = Control::Kind::toggle, .key = std::move(key), .label = std::move(label), .asksPermission = true};
}

Control plainSwitch(std::string label, std::string key, std::string enabledBy = {}) {
    return {.kind = Control::Kind::toggle,
            .key = std::move(key),
            .label = std::move(label),
            .enabledBy = std::move(enabledBy)};
}

Control stepper(std::string start, std::string end, std::string key, std::int64_t least, std::int64_t most,
                std::string enabledBy) {
    return {.kind = Control::Kind::stepper,
            .key = std::move(key),
            .label = std::move(start),
            .labelEnd = std::move(end),
            .least = least,
            .most = most,
            .enabledBy = std::move(enabledBy)};
}

Control sound(std::string key, std::string enabledBy) {
    return {.kind = Control::Kind::sound, .key = std::move(key), .label = "Sound", .enabledBy = std::move(enabledBy)};
}

Control time(std::string label, std::string key) {
    return {.kind = Control::Kind::time, .key = std::move(key), .label = std::move(label), .enabledBy = "quietEnabled"};
}

} // namespace

const std::vector<SettingsSection>& settingsSections() {
    static const std::vector<SettingsSection> sections{
        {"Alerts",
         {alertSwitch("Charge limit", "limitEnabled"),
          stepper("Alert when charging reaches ", "%", "limit", 50, 100, "limitEnabled"),
          plainSwitch("Repeat every 5 minutes, up to 3 times", "repeatReminder", "limitEnabled"),
          sound("limitSound", "limitEnabled")}},
        {"",
         {alertSwitch("Low battery", "lowEnabled"),
          stepper("Alert on battery at ", "% or less", "low", 5, 50, "lowEnabled"), sound("lowSound", "lowEnabled")}},
        {"",
         {alertSwitch("Suggest Low Power Mode", "lowPowerEnabled"),
          stepper("When on battery below ", "%", "lowPowerAt", 10, 60, "lowPowerEnabled"),
          sound("lowPowerSound", "lowPowerEnabled")}},
        {"",
         {alertSwitch("Plugged in too long", "longEnabled"),
          stepper("Alert after ", " h plugged in above the charge limit", "longHours", 1, 48, "longEnabled"),
          sound("longSound", "longEnabled")}},
        {"", {alertSwitch("Battery health below 80% (once)", "healthEnabled"), sound("healthSound", "healthEnabled")}},
        {"",
         {alertSwitch("Firmware's charge limit lost or ignored", "firmwareLimitEnabled"),
          sound("firmwareLimitSound", "firmwareLimitEnabled")},
         true},
        {"Quiet hours",
         {plainSwitch("Hold alerts during quiet hours", "quietEnabled"), time("From", "quietStart"),
          time("Until", "quietEnd")}},
        {"Menu bar",
         {plainSwitch("Show percentage in the menu bar", "showPercent"),
          plainSwitch("Show time remaining", "showTime")}}};
    return sections;
}

std::string stepperLabel(const SettingsControl& stepper, std::int64_t value) {
    return stepper.label + std::to_string(value) + stepper.labelEnd;
}

const std::vector<SoundChoice>& soundChoices() {
    static const std::vector<SoundChoice> choices = [] {
        std::vector<SoundChoice> all{{"Default", "default"}, {"None", "none"}};
        for (const std::string_view name : soundNames)
            all.push_back({name, name});
        return all;
    }();
    return choices;
}

bool isHeardWhenChosen(std::string_view stored) {
    return stored != "default" && stored != "none";
}

std::optional<TimeOfDayChoice> timeOfMinutes(std::int64_t minutes) {
    constexpr int minutesOfDay = 24 * 60;
    if (minutes < 0 || minutes >= minutesOfDay)
        return std::nullopt;
    return TimeOfDayChoice{.hour = static_cast<int>(minutes / 60), .minute = static_cast<int>(minutes % 60)};
}
