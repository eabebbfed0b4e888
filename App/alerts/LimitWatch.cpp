// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/LimitWatch.h"

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr std::int64_t noLimit = 100;

/// Firmware stops a point late, and the charge that it reports swings by another.
constexpr std::int64_t tolerance = 3;

/// Long enough for a charge that ends by itself, and for a battery that finds its true charge.
constexpr Duration patience = 10min;

std::string percent(std::int64_t number) {
    return std::to_string(number) + "%";
}

/// One reminder for all batteries; those of one machine often say the same.
void tell(LimitWatch::Outcome& outcome, LimitAlertKind kind, const char* title, const std::string& sentence) {
    const auto same = std::ranges::find(outcome.due, kind, &LimitAlert::kind);
    if (same == outcome.due.end())
        outcome.due.push_back({kind, title, sentence});
    else if (same->body.find(sentence) == std::string::npos)
        same->body += " " + sentence;
}

} // namespace

LimitWatch::Outcome LimitWatch::run(const std::vector<PackLimit>& packs, bool pluggedIn, Duration uptime,
                                    bool canDeliver, bool prime) {
    Outcome outcome;
    tellsLimit_ = std::ranges::any_of(packs, &PackLimit::tellsLimit);
    if (prime)
        compared_.clear();
    watchCharge(packs, pluggedIn, uptime, canDeliver && !prime, outcome);
    watchLimits(packs, canDeliver && !prime, outcome);
    return outcome;
}

void LimitWatch::watchCharge(const std::vector<PackLimit>& packs, bool pluggedIn, Duration uptime, bool mayTell,
                             Outcome& outcome) {
    const auto before = std::exchange(bays_, {});
    for (const PackLimit& pack : packs) {
        const auto known = before.find(pack.device);
        const auto battery = Battery::of(pack);
        Bay bay{.battery = battery, .limit = pack.limit.value_or(0), .beyondSince = {}};
        if (known != before.end() && known->second.battery == battery) {
            // A value that says nothing may be a reading that failed; one that says something else was set by somebody,
            // and the charge need not have been within that.
            if (!pack.limit || *pack.limit == known->second.limit)
                bay = known->second;
        }
        if (bay.limit == 0 || bay.limit == noLimit)
            continue;
        if (pack.percent <= bay.limit) {
            bay.wasWithin = true;
            bay.isTold = false;
        }
        bay.isTold = bay.isTold && pluggedIn;
        if (!pluggedIn || !pack.isCharging || !pack.limit || pack.percent < bay.limit + tolerance)
            bay.beyondSince.reset();
        else if (!bay.beyondSince)
            bay.beyondSince = uptime;
        if (mayTell && bay.wasWithin && bay.beyondSince && uptime - *bay.beyondSince >= patience) {
            bay.wasWithin = false;
            bay.isTold = true;
            tell(outcome, LimitAlertKind::notHolding, "Charge limit not holding",
                 "The firmware's limit is " + percent(bay.limit) + ", but the battery is at " + percent(pack.percent) +
                     " and still charging.");
        }
        bays_.emplace(pack.device, std::move(bay));
    }
    const auto isTold = [](const auto& entry) { return entry.second.isTold; };
    if (std::ranges::any_of(before, isTold) && std::ranges::none_of(bays_, isTold))
        outcome.over.push_back(LimitAlertKind::notHolding);
}

void LimitWatch::watchLimits(const std::vector<PackLimit>& packs, bool mayTell, Outcome& outcome) {
    // Two batteries of one kind cannot be told apart; as long as one of them has its limit, nothing was reset.
    std::map<Battery, std::int64_t> lowest; // 0 for a value that says nothing
    for (const PackLimit& pack : packs) {
        const std::int64_t limit = pack.limit.value_or(pack.tellsLimit ? 0 : noLimit);
        const auto [entry, isNew] = lowest.emplace(Battery::of(pack), limit);
        if (!isNew && limit != 0)
            entry->second = entry->second == 0 ? limit : std::min(entry->second, limit);
    }
    const bool wasTold = !toldReset_.empty();
    const auto before = std::exchange(unlimited_, {});
    for (const auto& [battery, limit] : lowest) {
        if (limit == 0)
            continue;
        const auto remembered = memory.limits.find(battery);
        if (limit < noLimit) {
            memory.remember(battery, limit);
            compared_.insert(battery);
            toldReset_.erase(battery);
        } else if (compared_.contains(battery)) {
            memory.limits.erase(battery); // by somebody who knows
        } else if (remembered == memory.limits.end()) {
            compared_.insert(battery);
        } else if (!mayTell || !before.contains(battery)) {
            // Drivers add the file a moment after the battery, so one reading proves nothing. That of the start or of
            // waking is the first.
            unlimited_.insert(battery);
        } else {
            const bool isGone = std::ranges::none_of(
                packs, [&, &key = battery](const PackLimit& pack) { return pack.limit && Battery::of(pack) == key; });
            tell(outcome, LimitAlertKind::reset, "Charge limit was reset",
                 "The firmware's limit was " + percent(remembered->second) + " and is now " +
                     (isGone ? "gone" : percent(noLimit)) + ".");
            memory.limits.erase(remembered);
            compared_.insert(battery);
            toldReset_.insert(battery);
        }
    }
    if (wasTold && toldReset_.empty())
        outcome.over.push_back(LimitAlertKind::reset);
}
