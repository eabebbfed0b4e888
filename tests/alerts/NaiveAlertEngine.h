// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/AlertEngine.h"
#include "alerts/Prefs.h"
#include "battery/BatteryState.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// The rules of the reminders once more, as plainly as they can be told and as slowly. It has no counters and no marks:
/// it keeps a list of all runs and answers every question ("was that given in this episode?") by looking back. What it
/// gives is compared with what the program's engine gives.
class NaiveAlertEngine {
public:
    bool healthAlertSent = false; ///< the mark that the program keeps in the preferences store

    std::vector<PendingAlert> run(const BatteryState& state, std::optional<Date> since, Date now, const Prefs& prefs,
                                  bool canDeliver, bool prime) {
        runs_.push_back({.now = now, .prime = prime, .holds = {}, .given = {}});
        if (!state.hasBattery)
            return {};
        for (const AlertKind kind : {AlertKind::chargeLimit, AlertKind::low, AlertKind::lowPower, AlertKind::tooLong}) {
            if (holds(kind, state, since, now, prefs))
                runs_.back().holds.insert(kind);
        }

        std::vector<PendingAlert> list;
        if (!prime && canDeliver) {
            for (const AlertKind kind :
                 {AlertKind::chargeLimit, AlertKind::low, AlertKind::lowPower, AlertKind::tooLong}) {
                if (!runs_.back().holds.contains(kind) || isSilenced(kind))
                    continue;
                const bool due = kind == AlertKind::chargeLimit ? isChargeLimitDue(now, prefs) : timesGiven(kind) == 0;
                if (due)
                    list.push_back(text(kind, state, since, now));
            }
            for (const PendingAlert& alert : list)
                runs_.back().given.insert(alert.kind);
        }

        const std::optional<double> health = healthOf(state);
        if (health && *health < 80.0 && !healthAlertSent) {
            if (prime) {
                healthAlertSent = true;
            } else if (prefs.healthEnabled && canDeliver) {
                healthAlertSent = true;
                list.push_back(
                    {.kind = AlertKind::health,
                     .title = "Battery health is low",
                     .body = "Battery health has fallen to " + nearest(*health) + "% of its original capacity."});
            }
        }
        if (health && *health >= 82.0)
            healthAlertSent = false;
        return list;
    }

    /// What an engine has to remember after the same runs.
    AlertEngine memory() const {
        AlertEngine engine;
        for (const AlertKind kind : {AlertKind::chargeLimit, AlertKind::low, AlertKind::lowPower, AlertKind::tooLong}) {
            if (isSilenced(kind))
                engine.suppressed.insert(kind);
        }
        engine.chargeSent = timesGiven(AlertKind::chargeLimit);
        engine.chargeLast = lastChargeLimit().value_or(engine.chargeLast);
        engine.lowSent = timesGiven(AlertKind::low) > 0;
        engine.lowPowerSent = timesGiven(AlertKind::lowPower) > 0;
        engine.longSent = timesGiven(AlertKind::tooLong) > 0;
        return engine;
    }

private:
    struct Run {
        Date now;
        bool prime = false;
        std::set<AlertKind> holds; ///< the kinds whose condition was true
        std::set<AlertKind> given;
    };
    std::vector<Run> runs_;

    static bool holds(AlertKind kind, const BatteryState& state, std::optional<Date> since, Date now,
                      const Prefs& prefs) {
        const bool fullEnough = state.pluggedIn && state.percent >= prefs.limit;
        switch (kind) {
        case AlertKind::chargeLimit:
            return prefs.limitEnabled && fullEnough;
        case AlertKind::low:
            return prefs.lowEnabled && !state.pluggedIn && state.percent <= prefs.low;
        case AlertKind::lowPower:
            return prefs.lowPowerEnabled && !state.pluggedIn && !state.lowPowerMode && state.percent < prefs.lowPowerAt;
        case AlertKind::tooLong:
            return prefs.longEnabled && fullEnough && since &&
                   (now - *since).count() > static_cast<double>(prefs.longHours) * 3600.0;
        case AlertKind::health:
            return false; // no episodes; it has a mark of its own
        }
        return false;
    }

    /// The last runs, as far back as all of them found the condition true; newest first.
    std::vector<const Run*> episode(AlertKind kind) const {
        std::vector<const Run*> found;
        for (auto run = runs_.rbegin(); run != runs_.rend() && run->holds.contains(kind); ++run)
            found.push_back(&*run);
        return found;
    }

    bool isSilenced(AlertKind kind) const {
        const std::vector<const Run*> runs = episode(kind);
        return std::any_of(runs.begin(), runs.end(), [](const Run* run) { return run->prime; });
    }

    std::int64_t timesGiven(AlertKind kind) const {
        const std::vector<const Run*> runs = episode(kind);
        return std::count_if(runs.begin(), runs.end(), [kind](const Run* run) { return run->given.contains(kind); });
    }

    std::optional<Date> lastChargeLimit() const {
        std::optional<Date> last;
        for (const Run& run : runs_) {
            if (run.given.contains(AlertKind::chargeLimit))
                last = run.now;
        }
        return last;
    }

    bool isChargeLimitDue(Date now, const Prefs& prefs) const {
        const std::int64_t times = timesGiven(AlertKind::chargeLimit);
        if (times == 0)
            return true;
        return prefs.repeatReminder && times < 4 && (now - *lastChargeLimit()).count() >= 290.0;
    }

    static std::optional<double> healthOf(const BatteryState& state) {
        if (!state.designCapacity || !state.fullCapacity || *state.designCapacity <= 0)
            return std::nullopt;
        return static_cast<double>(*state.fullCapacity) / static_cast<double>(*state.designCapacity) * 100.0;
    }

    /// The nearest whole number; a half goes away from zero.
    static std::string nearest(double number) {
        const double whole = std::trunc(number);
        const double away = std::abs(number - whole) >= 0.5 ? (number < 0 ? -1 : 1) : 0;
        return std::to_string(static_cast<std::int64_t>(whole + away));
    }

    static PendingAlert text(AlertKind kind, const BatteryState& state, std::optional<Date> since, Date now) {
        const std::string percent = std::to_string(state.percent) + "%";
        PendingAlert alert{.kind = kind, .title = {}, .body = {}};
        if (kind == AlertKind::chargeLimit) {
            alert.title = "Charge limit reached";
            alert.body = "Battery is at " + percent + ". Unplug to keep it healthy.";
        } else if (kind == AlertKind::low) {
            alert.title = "Low battery";
            alert.body = "Battery is at " + percent + ". Plug in soon.";
        } else if (kind == AlertKind::lowPower) {
            alert.title = "Try Low Power Mode";
            alert.body =
                "Battery is at " + percent + ". Turn on Low Power Mode (System Settings, Battery) to stretch it.";
        } else {
            const auto hours = static_cast<std::int64_t>((now - *since).count() / 3600.0);
            alert.title = "Plugged in for a long time";
            alert.body = "Plugged in for over " + std::to_string(hours) + " h at " + percent +
                         ". Unplug it to let the battery rest.";
        }
        return alert;
    }
};
