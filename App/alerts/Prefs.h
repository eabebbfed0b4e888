// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/AlertKind.h"
#include "platform/Clock.h"
#include "platform/Value.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

class Calendar;
class UserDefaults;

/// A snapshot of the user's preferences, with the values as stored: enforcing ranges is up to the settings form.
struct Prefs {
    bool limitEnabled = false;               ///< remind when the charge limit is reached
    bool repeatReminder = false;             ///< repeat that reminder while the condition lasts
    bool lowEnabled = false;                 ///< remind when the battery is low
    bool longEnabled = false;                ///< remind when plugged in too long
    bool healthEnabled = false;              ///< remind when the health has fallen
    bool quietEnabled = false;               ///< hold reminders during the quiet hours
    bool lowPowerEnabled = false;            ///< suggest Low Power Mode
    bool firmwareLimitEnabled = false;       ///< remind when the firmware's charge limit is lost or ignored
    std::int64_t lowPowerAt = 0;             ///< percent below which Low Power Mode is suggested
    std::int64_t limit = 0;                  ///< charge limit, percent
    std::int64_t low = 0;                    ///< low-battery threshold, percent
    std::int64_t longHours = 0;              ///< hours plugged in above the limit
    std::int64_t quietStart = 0;             ///< minutes since local midnight; the first of the quiet hours
    std::int64_t quietEnd = 0;               ///< minutes since local midnight; the first after the quiet hours
    bool showPercent = false;                ///< show the percentage beside the icon
    bool showTime = false;                   ///< show the remaining time beside the icon
    std::map<AlertKind, std::string> sounds; ///< "default", "none" or the name of a sound; every kind has an entry
    std::string firmwareLimitSound;          ///< as in `sounds`

    bool operator==(const Prefs&) const = default;

    /// The fallback of each of the twenty-two preferences, by key.
    static const Dictionary& defaults();

    /// A fresh snapshot; registers the fallbacks first.
    static Prefs current(UserDefaults& store);

    /// Whether `date` lies in the quiet hours, in the user's local time. Equal start and end mean that there are none.
    bool inQuietHours(Date date, const Calendar& calendar) const;

    /// The end of the current snooze; empty when there is none or it has expired.
    static std::optional<Date> snoozeUntil(const UserDefaults& store, const Clock& clock);

    /// Stores the end of a snooze, or that there is none.
    static void setSnoozeUntil(UserDefaults& store, std::optional<Date> until);
};
