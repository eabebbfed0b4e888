// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/AlertEngine.h"

#include "alerts/Prefs.h"
#include "battery/BatteryState.h"
#include "platform/UserDefaults.h"

#include <chrono>
#include <cmath>
#include <string>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr const char* healthAlertSent = "healthAlertSent";

// The settings promise a repeat every five minutes. Ten seconds of slack for the refresh timer's jitter keep that from
// becoming six.
constexpr Duration repeatSpacing = 290s;
constexpr std::int64_t mostRepeats = 3;

// Two points apart, so that a health that wavers around the limit is reported once.
constexpr double healthLimit = 80;
constexpr double healthRecovered = 82;

double hours(Duration duration) {
    return duration.count() / 3600;
}

/// Whether the condition of an alert kind that has episodes holds.
bool holds(AlertKind kind, const BatteryState& state, std::optional<Date> since, Date now, const Prefs& prefs) {
    switch (kind) {
    case AlertKind::chargeLimit:
        return prefs.limitEnabled && state.pluggedIn && state.percent >= prefs.limit;
    case AlertKind::low:
        return prefs.lowEnabled && !state.pluggedIn && state.percent <= prefs.low;
    case AlertKind::tooLong:
        return prefs.longEnabled && state.pluggedIn && state.percent >= prefs.limit && since &&
               (now - *since).count() > static_cast<double>(prefs.longHours) * 3600;
    case AlertKind::lowPower:
        return prefs.lowPowerEnabled && !state.pluggedIn && state.percent < prefs.lowPowerAt && !state.lowPowerMode;
    case AlertKind::health:
        break; // has no episodes
    }
    return false;
}

PendingAlert chargeLimitAlert(const std::string& percent) {
    return {AlertKind::chargeLimit, "Charge limit reached",
            "Battery is at " + percent + "%. Unplug to keep it healthy."};
}

PendingAlert lowAlert(const std::string& percent) {
    return {AlertKind::low, "Low battery", "Battery is at " + percent + "%. Plug in soon."};
}

PendingAlert lowPowerAlert(const std::string& percent) {
    return {AlertKind::lowPower, "Try Low Power Mode",
            "Battery is at " + percent + "%. Turn on Low Power Mode (System Settings, Battery) to stretch it."};
}

PendingAlert tooLongAlert(const std::string& percent, Duration pluggedIn) {
    return {AlertKind::tooLong, "Plugged in for a long time",
            "Plugged in for over " + std::to_string(static_cast<std::int64_t>(hours(pluggedIn))) + " h at " + percent +
                "%. Unplug it to let the battery rest."};
}

PendingAlert healthAlert(double health) {
    return {AlertKind::health, "Battery health is low",
            "Battery health has fallen to " + std::to_string(std::llround(health)) + "% of its original capacity."};
}

/// Tracks the health on every run, and tells whether the reminder is due now; if so, it counts as given.
bool healthIsDue(double health, bool mayGive, bool prime, UserDefaults& defaults) {
    const bool sent = defaults.boolForKey(healthAlertSent);
    if (health >= healthRecovered && sent)
        defaults.setObject(healthAlertSent, false);
    if (health >= healthLimit || sent)
        return false;
    if (prime || mayGive)
        defaults.setObject(healthAlertSent, true);
    return !prime && mayGive;
}

} // namespace

std::vector<PendingAlert> AlertEngine::run(const BatteryState& state, std::optional<Date> since, Date now,
                                           const Prefs& prefs, bool canDeliver, bool prime, UserDefaults& defaults) {
    if (!state.hasBattery) {
        const Date last = chargeLast;
        *this = AlertEngine();
        chargeLast = last;
        return {};
    }
    std::set<AlertKind> due;
    for (const AlertKind kind : {AlertKind::chargeLimit, AlertKind::low, AlertKind::tooLong, AlertKind::lowPower}) {
        if (!holds(kind, state, since, now, prefs))
            rearm(kind);
        else if (prime)
            suppressed.insert(kind);
        else if (canDeliver && !suppressed.contains(kind))
            due.insert(kind);
    }
    std::vector<PendingAlert> alerts;
    const std::string percent = std::to_string(state.percent);
    if (due.contains(AlertKind::chargeLimit) && chargeLimitIsDue(prefs, now))
        alerts.push_back(chargeLimitAlert(percent));
    if (due.contains(AlertKind::low) && !std::exchange(lowSent, true))
        alerts.push_back(lowAlert(percent));
    if (due.contains(AlertKind::lowPower) && !std::exchange(lowPowerSent, true))
        alerts.push_back(lowPowerAlert(percent));
    if (due.contains(AlertKind::tooLong) && !std::exchange(longSent, true))
        alerts.push_back(tooLongAlert(percent, now - *since));
    if (const std::optional<double> health = state.healthPercent())
        if (healthIsDue(*health, prefs.healthEnabled && canDeliver, prime, defaults))
            alerts.push_back(healthAlert(*health));
    return alerts;
}

void AlertEngine::rearm(AlertKind kind) {
    suppressed.erase(kind);
    switch (kind) {
    case AlertKind::chargeLimit:
        chargeSent = 0;
        break;
    case AlertKind::low:
        lowSent = false;
        break;
    case AlertKind::tooLong:
        longSent = false;
        break;
    case AlertKind::lowPower:
        lowPowerSent = false;
        break;
    case AlertKind::health:
        break;
    }
}

bool AlertEngine::chargeLimitIsDue(const Prefs& prefs, Date now) {
    if (chargeSent > (prefs.repeatReminder ? mostRepeats : 0))
        return false;
    if (chargeSent >= 1 && now - chargeLast < repeatSpacing)
        return false;
    ++chargeSent;
    chargeLast = now;
    return true;
}
