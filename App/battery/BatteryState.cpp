// SPDX-License-Identifier: GPL-3.0-or-later
#include "battery/BatteryState.h"

#include "battery/FormatMinutes.h"

std::vector<std::string> BatteryState::symbolNames() const {
    std::vector<std::string> full{"battery.100percent", "battery.100"};
    if (!hasBattery)
        return {"battery.0"};
    if (isCharged)
        return full;
    if (isCharging)
        return {"battery.100.bolt", "bolt.fill"};
    if (pluggedIn)
        return percent < 100 ? std::vector<std::string>{"powerplug.fill", "powerplug"} : full;
    // Each step lies just above the middle between two levels, so that a charge in the middle shows the lower one.
    if (percent >= 88)
        return {"battery.100"};
    if (percent >= 63)
        return {"battery.75"};
    if (percent >= 38)
        return {"battery.50"};
    if (percent >= 13)
        return {"battery.25"};
    return {"battery.0"};
}

std::optional<std::string> BatteryState::shortTime() const {
    if (!hasBattery || isCharged || (pluggedIn && !isCharging))
        return std::nullopt;
    const auto& minutes = isCharging ? minutesToFull : minutesToEmpty;
    if (!minutes)
        return std::nullopt;
    const std::int64_t hours = *minutes / 60;
    const std::int64_t rest = *minutes - hours * 60;
    return std::to_string(hours) + (rest < 10 ? ":0" : ":") + std::to_string(rest);
}

std::string BatteryState::stateText() const {
    if (!hasBattery)
        return "No battery found";
    if (isCharged)
        return "Fully charged";
    if (isCharging)
        return minutesToFull ? "Charging, " + formatMinutes(*minutesToFull) + " to full"
                             : "Charging, estimating time to full…";
    if (pluggedIn)
        return percent < 100 ? "Plugged in, not charging" : "Fully charged";
    return minutesToEmpty ? "On battery, " + formatMinutes(*minutesToEmpty) + " left"
                          : "On battery, estimating time left…";
}

std::optional<double> BatteryState::healthPercent() const {
    if (!designCapacity || !fullCapacity || *designCapacity < 1)
        return std::nullopt;
    return static_cast<double>(*fullCapacity) / static_cast<double>(*designCapacity) * 100;
}

std::optional<std::string> BatteryState::healthLabel() const {
    const auto ratio = healthPercent();
    if (!ratio)
        return std::nullopt;
    if (*ratio > 90)
        return "Good";
    return *ratio >= 80 ? "Fair" : "Worn";
}
