// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/AlertKind.h"
#include "alerts/PendingAlert.h"
#include "platform/Clock.h"

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

class UserDefaults;
struct BatteryState;
struct Prefs;

/// Decides which reminders are due; it delivers none. Its memory is what was given in the episodes that are going on:
/// an episode of a kind lasts as long as every run finds its condition true. The memory ends with the program; only
/// that the battery's health was told is kept in the preferences store.
struct AlertEngine {
    std::set<AlertKind> suppressed; ///< silent until their condition has been false once
    std::int64_t chargeSent = 0;    ///< charge-limit reminders given in this episode
    Date chargeLast = Date::min();  ///< when the last of them was given; the distant past at first
    bool lowSent = false;           ///< the low-battery reminder was given in this episode
    bool longSent = false;          ///< the plugged-in-too-long reminder was given in this episode
    bool lowPowerSent = false;      ///< the Low Power Mode suggestion was given in this episode

    bool operator==(const AlertEngine&) const = default;

    /// What is due at `now`, at most one of each kind: charge limit, low, Low Power Mode, too long, health. What is
    /// returned counts as given.
    ///
    /// `since` is when the machine was plugged in, if known. Without `canDeliver` nothing is given, and what is due
    /// then is due later, if it still holds. With `prime` nothing is given either, but what holds now is an old story:
    /// it stays silent until it has ended once.
    std::vector<PendingAlert> run(const BatteryState& state, std::optional<Date> since, Date now, const Prefs& prefs,
                                  bool canDeliver, bool prime, UserDefaults& defaults);

private:
    void rearm(AlertKind kind);
    bool chargeLimitIsDue(const Prefs& prefs, Date now);
};
