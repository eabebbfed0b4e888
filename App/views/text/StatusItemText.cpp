// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/StatusItemText.h"

#include "alerts/Prefs.h"
#include "views/text/FixedDecimals.h"

namespace {

std::string join(const std::string& percent, const std::string& time) {
    return percent.empty() || time.empty() ? percent + time : percent + " · " + time;
}

std::string spaced(const std::string& text) {
    return text.empty() ? text : " " + text;
}

} // namespace

std::string statusItemText(const BatteryState& state, const Prefs& prefs) {
    if (!state.hasBattery)
        return {};
    return join(prefs.showPercent ? std::to_string(state.percent) + "%" : "",
                prefs.showTime ? state.shortTime().value_or("") : "");
}

std::string statusItemTitle(const BatteryState& state, const Prefs& prefs) {
    return spaced(statusItemText(state, prefs));
}

std::string widestStatusItemTitle(const Prefs& prefs) {
    return spaced(join(prefs.showPercent ? "100%" : "", prefs.showTime ? "00:00" : ""));
}

std::string numberSymbol(const BatteryState& state, const Prefs& prefs) {
    if (!state.hasBattery)
        return {};
    std::string shown = "percent.";
    if (!prefs.showPercent) {
        const std::optional<std::string> time = prefs.showTime ? state.shortTime() : std::nullopt;
        if (!time)
            return {};
        shown = "time." + *time + ".";
    }
    const std::string meant = state.symbolNames().front();
    const char* mark = "level";
    if (meant == "battery.100percent")
        mark = "full";
    else if (meant == "battery.100.bolt")
        mark = "bolt";
    else if (meant == "powerplug.fill")
        mark = "plug";
    return shown + std::to_string(state.percent) + "." + mark;
}

std::string statusItemToolTip(const BatteryState& state) {
    std::string lines = state.stateText();
    if (state.hasBattery)
        lines = std::to_string(state.percent) + "% · " + lines;
    const auto health = state.healthPercent();
    const auto label = state.healthLabel();
    if (health && label)
        lines += "\nHealth: " + fixed(*health, 0) + "% (" + *label + ")";
    if (state.cycleCount)
        lines += "\nCycles: " + std::to_string(*state.cycleCount);
    return lines;
}
