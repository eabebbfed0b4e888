// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PlainLimits.h"

#include <algorithm>

namespace {

bool isSet(int limit) {
    return limit > 0 && limit < 100;
}

bool isNone(int limit) {
    return limit == PlainLimits::gone || limit == 100;
}

} // namespace

const PlainLimits::Pack* PlainLimits::at(const Look& look, const std::string& bay) {
    for (const Pack& pack : look.packs) {
        if (pack.bay == bay)
            return &pack;
    }
    return nullptr;
}

/// The latest looks since the start, newest first, through which one battery was in the bay and its limit was the same
/// or not told; the oldest of them tells it.
std::vector<std::size_t> PlainLimits::stretch(const std::string& bay) const {
    std::vector<std::size_t> found;
    std::size_t told = 0; // how many of them there are up to the oldest that tells the limit
    std::string battery;
    int limit = 0;
    for (std::size_t i = looks_.size(); i-- > 0;) {
        const Pack* pack = at(looks_[i], bay);
        if (pack == nullptr || (!battery.empty() && pack->battery != battery))
            break;
        battery = pack->battery;
        if (pack->limit > 0 && limit != 0 && pack->limit != limit)
            break;
        found.push_back(i);
        if (pack->limit > 0) {
            limit = pack->limit;
            told = found.size();
        }
        if (looks_[i].starts)
            break;
    }
    found.resize(told);
    return isSet(limit) ? found : std::vector<std::size_t>();
}

bool PlainLimits::doesNotHold(const std::string& bay) const {
    const auto since = stretch(bay);
    const int limit = since.empty() ? 0 : at(looks_[since.back()], bay)->limit;
    double beyond = looks_.back().time + 1;
    for (const std::size_t i : since) {
        const Pack& pack = *at(looks_[i], bay);
        if (!looks_[i].pluggedIn || !pack.charges || pack.limit != limit || pack.percent < limit + 3)
            break;
        beyond = looks_[i].time;
    }
    if (looks_.back().time - beyond < 600)
        return false;
    for (const std::size_t i : since) {
        if (i < toldBays_.size() && toldBays_[i].contains(bay))
            return false;
        if (at(looks_[i], bay)->percent <= limit)
            return true;
    }
    return false;
}

/// `nonsense` also if the battery was not there.
int PlainLimits::limitOf(const std::string& battery, std::size_t look) const {
    std::vector<int> limits;
    for (const Pack& pack : looks_[look].packs) {
        if (pack.battery == battery && pack.limit != nonsense)
            limits.push_back(pack.limit == gone ? 100 : pack.limit);
    }
    return limits.empty() ? nonsense : *std::ranges::min_element(limits);
}

/// The limit that is remembered before that look; `nonsense` for none.
int PlainLimits::before(const std::string& battery, std::size_t look) const {
    if (!before_.contains({battery, look}))
        before_[{battery, look}] = reckonBefore(battery, look);
    return before_[{battery, look}];
}

int PlainLimits::reckonBefore(const std::string& battery, std::size_t look) const {
    for (std::size_t i = look; i-- > 0;) {
        if (toldBatteries_[i].contains(battery))
            return nonsense;
        const int limit = limitOf(battery, i);
        if (isSet(limit))
            return limit;
        if (isNone(limit) && isCompared(battery, i))
            return nonsense;
    }
    return nonsense;
}

/// Whether it was clear before that look, and since the last start or sleep, whether the battery had kept its limit.
bool PlainLimits::isCompared(const std::string& battery, std::size_t look) const {
    if (!compared_.contains({battery, look}))
        compared_[{battery, look}] = reckonCompared(battery, look);
    return compared_[{battery, look}];
}

bool PlainLimits::reckonCompared(const std::string& battery, std::size_t look) const {
    for (std::size_t i = look; !looks_[i].follows && i-- > 0;) {
        const int limit = limitOf(battery, i);
        if (isSet(limit) || toldBatteries_[i].contains(battery) || (isNone(limit) && before(battery, i) == nonsense))
            return true;
    }
    return false;
}

std::map<std::string, std::set<std::string>> PlainLimits::look(const Look& now) {
    looks_.push_back(now);
    std::set<std::string> bays;
    std::set<std::string> batteries;
    std::map<std::string, std::set<std::string>> told;
    const std::size_t last = looks_.size() - 1;
    for (const Pack& pack : now.packs) {
        if (!now.mayTell || now.follows)
            break;
        if (doesNotHold(pack.bay)) {
            bays.insert(pack.bay);
            told["limitNotHolding"].insert("The firmware's limit is " + std::to_string(pack.limit) +
                                           "%, but the battery is at " + std::to_string(pack.percent) +
                                           "% and still charging.");
        }
        const int was = before(pack.battery, last);
        if (was == nonsense || !isNone(limitOf(pack.battery, last)) || isCompared(pack.battery, last) || last == 0 ||
            !isNone(limitOf(pack.battery, last - 1)))
            continue;
        bool reads = false;
        for (const Pack& each : now.packs)
            reads = reads || (each.battery == pack.battery && each.limit == 100);
        batteries.insert(pack.battery);
        told["limitReset"].insert("The firmware's limit was " + std::to_string(was) + "% and is now " +
                                  (reads ? "100%." : "gone."));
    }
    toldBays_.push_back(bays);
    toldBatteries_.push_back(batteries);
    return told;
}

std::set<std::string> PlainLimits::shown() const {
    std::set<std::string> identifiers;
    std::set<std::string> bays;
    std::set<std::string> batteries;
    for (const auto& told : toldBays_)
        bays.insert(told.begin(), told.end());
    for (const auto& told : toldBatteries_)
        batteries.insert(told.begin(), told.end());
    for (const std::string& bay : bays) {
        const auto since = stretch(bay);
        for (const std::size_t i : since) {
            if (!looks_[i].pluggedIn || at(looks_[i], bay)->percent <= at(looks_[since.back()], bay)->limit)
                break;
            if (toldBays_[i].contains(bay))
                identifiers.insert("limitNotHolding");
        }
    }
    for (const std::string& battery : batteries) {
        for (std::size_t i = looks_.size(); i-- > 0 && !isSet(limitOf(battery, i));) {
            if (toldBatteries_[i].contains(battery))
                identifiers.insert("limitReset");
        }
    }
    return identifiers;
}
