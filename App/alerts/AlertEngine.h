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

/// Decides which reminders are due; it does not deliver them. It remembers what was given in the current episodes: an
/// episode of a kind lasts as long as every run finds its condition true. The memory ends with the program; only
/// whether the health reminder was given is kept in the preferences store.
struct AlertEngine {
    std::set<AlertKind> suppressed; ///< silent until their condition has been false once
    std::int64_t chargeSent = 0;    ///< charge-limit reminders given in this episode
    Date chargeLast = Date::min();  ///< when the last of them was given; the distant past at first
    bool lowSent = false;           ///< the low-battery reminder was given in this episode
    bool longSent = false;          ///< the plugged-in-too-long reminder was given in this episode
    bool lowPowerSent = false;      ///< the Low Power Mode suggestion was given in this episode

    bool operator==(const AlertEngine&) const = default;

    /// The reminders due at `now`, at most one of each kind: charge limit, low, Low Power Mode, too long, health.
    /// Returned reminders count as given.
    ///
    /// `since` is when the machine was plugged in, if known. Without `canDeliver` nothing is given, and what is due
    /// then is given later if it still holds. With `prime` nothing is given either, and a condition that holds now
    /// stays silent until it has been false once.
    std::vector<PendingAlert> run(const BatteryState& state, std::optional<Date> since, Date now, const Prefs& prefs,
                                  bool canDeliver, bool prime, UserDefaults& defaults);

private:
    void rearm(AlertKind kind);
    bool chargeLimitIsDue(const Prefs& prefs, Date now);
};
