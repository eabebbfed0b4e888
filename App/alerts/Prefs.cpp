// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/Prefs.h"

#include "platform/Calendar.h"
#include "platform/UserDefaults.h"

namespace {

constexpr std::string_view snoozeKey = "snoozeUntil";

std::string_view soundKey(AlertKind kind) {
    switch (kind) {
    case AlertKind::chargeLimit:
        return "limitSound";
    case AlertKind::low:
        return "lowSound";
    case AlertKind::tooLong:
        return "longSound";
    case AlertKind::health:
        return "healthSound";
    case AlertKind::lowPower:
        return "lowPowerSound";
    }
    return {};
}

} // namespace

const Dictionary& Prefs::defaults() {
    static const Dictionary table{
        {"limitEnabled", true},
        {"limit", 80},
        {"repeatReminder", true},
        {"limitSound", "default"},
        {"lowEnabled", true},
        {"low", 20},
        {"lowSound", "default"},
        {"longEnabled", true},
        {"longHours", 8},
        {"longSound", "default"},
        {"lowPowerEnabled", true},
        {"lowPowerAt", 30},
        {"lowPowerSound", "default"},
        {"healthEnabled", true},
        {"healthSound", "default"},
        {"firmwareLimitEnabled", true},
        {"firmwareLimitSound", "default"},
        {"quietEnabled", false},
        {"quietStart", 22 * 60},
        {"quietEnd", 7 * 60},
        {"showPercent", true},
        {"showTime", false},
    };
    return table;
}

Prefs Prefs::current(UserDefaults& store) {
    store.registerDefaults(defaults());
    Prefs prefs;
    prefs.limitEnabled = store.boolForKey("limitEnabled");
    prefs.repeatReminder = store.boolForKey("repeatReminder");
    prefs.lowEnabled = store.boolForKey("lowEnabled");
    prefs.longEnabled = store.boolForKey("longEnabled");
    prefs.healthEnabled = store.boolForKey("healthEnabled");
    prefs.quietEnabled = store.boolForKey("quietEnabled");
    prefs.lowPowerEnabled = store.boolForKey("lowPowerEnabled");
    prefs.firmwareLimitEnabled = store.boolForKey("firmwareLimitEnabled");
    prefs.lowPowerAt = store.integerForKey("lowPowerAt");
    prefs.limit = store.integerForKey("limit");
    prefs.low = store.integerForKey("low");
    prefs.longHours = store.integerForKey("longHours");
    prefs.quietStart = store.integerForKey("quietStart");
    prefs.quietEnd = store.integerForKey("quietEnd");
    prefs.showPercent = store.boolForKey("showPercent");
    prefs.showTime = store.boolForKey("showTime");
    for (const AlertKind kind : allAlertKinds)
        prefs.sounds[kind] = store.stringForKey(soundKey(kind)).value_or("default");
    prefs.firmwareLimitSound = store.stringForKey("firmwareLimitSound").value_or("default");
    return prefs;
}

bool Prefs::inQuietHours(Date date, const Calendar& calendar) const {
    if (!quietEnabled || quietStart == quietEnd)
        return false;
    const auto [hour, minute] = calendar.timeOfDay(date);
    const std::int64_t now = hour * 60 + minute;
    if (quietStart < quietEnd)
        return quietStart <= now && now < quietEnd;
    return now >= quietStart || now < quietEnd;
}

std::optional<Date> Prefs::snoozeUntil(const UserDefaults& store, const Clock& clock) {
    const Date until{Duration(store.doubleForKey(snoozeKey))};
    return clock.now() < until ? std::optional(until) : std::nullopt;
}

void Prefs::setSnoozeUntil(UserDefaults& store, std::optional<Date> until) {
    // A cleared snooze is stored as 0 rather than by removing the key: a reader of the file sees that there was one.
    store.setObject(snoozeKey, until ? Value(until->time_since_epoch().count()) : Value(0));
}
