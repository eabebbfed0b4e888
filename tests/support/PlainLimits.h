// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// What the watch on the firmware's charge limit must say, reckoned anew at every look from all looks so far. Written
/// for the tests, and plain rather than fast: it has nothing of the program's own in it.
class PlainLimits {
public:
    static constexpr int gone = -1;    ///< there is no limit to read
    static constexpr int nonsense = 0; ///< there is, and it is no percentage

    struct Pack {
        std::string bay;
        std::string battery;
        int percent = 0;
        bool charges = false;
        int limit = gone;
    };

    struct Look {
        double time = 0;
        bool starts = false;  ///< the program
        bool follows = false; ///< a start or a sleep
        bool mayTell = true;
        bool pluggedIn = false;
        std::vector<Pack> packs = {};
    };

    /// What is told at this look: sentences, by the identifier of their notification.
    std::map<std::string, std::set<std::string>> look(const Look& now);

    /// The identifiers of those that are still true.
    std::set<std::string> shown() const;

private:
    std::vector<Look> looks_;
    std::vector<std::set<std::string>> toldBays_;      ///< at each look: that the limit does not hold
    std::vector<std::set<std::string>> toldBatteries_; ///< at each look: that their limit was reset

    using BatteryAtLook = std::pair<std::string, std::size_t>;
    mutable std::map<BatteryAtLook, int> before_; ///< what has been reckoned already
    mutable std::map<BatteryAtLook, bool> compared_;

    static const Pack* at(const Look& look, const std::string& bay);
    std::vector<std::size_t> stretch(const std::string& bay) const;
    bool doesNotHold(const std::string& bay) const;
    int limitOf(const std::string& battery, std::size_t look) const;
    int before(const std::string& battery, std::size_t look) const;
    int reckonBefore(const std::string& battery, std::size_t look) const;
    bool isCompared(const std::string& battery, std::size_t look) const;
    bool reckonCompared(const std::string& battery, std::size_t look) const;
};
