// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

/// Estimates how long the battery lasts, or takes to fill, from successive readings. The momentary rate jumps with
/// every web page that loads, so it is smoothed and checked against the actual drain of the battery, and no time is
/// given until it can be trusted.
class TimeEstimate {
public:
    /// The direction in which charge flows; `none` if none flows or that is unknown, and then no time is given.
    enum class Flow { none, charging, discharging };

    /// One reading of the batteries. Amounts are in any one unit, rates in that unit per hour.
    struct Reading {
        Duration uptime{}; ///< when it was taken, seconds since the machine started
        Duration slept{};  ///< how much of that the machine had slept
        bool onExternalPower = false;
        Flow flow = Flow::none;
        std::string batteries;      ///< which packs were counted, and in which unit
        std::optional<double> now;  ///< stored
        double remaining = 0;       ///< still to be stored until charging ends
        std::optional<double> full; ///< stored when full; charging may end before
        std::optional<double> rate; ///< signed, negative out of the battery
        double slowest = 0;         ///< a rate below this says nothing
    };

    struct Minutes {
        std::optional<std::int64_t> toEmpty; ///< whole minutes; only while discharging
        std::optional<std::int64_t> toFull;  ///< whole minutes; only while charging
        bool operator==(const Minutes&) const = default;
    };

    /// Takes a reading and returns the times as known now.
    Minutes update(const Reading& reading);

    /// Whether the time is unknown only because the run is too young: another reading soon will give it.
    bool isSettling() const { return settling_; }

private:
    /// A change of the stored amount.
    struct Change {
        Duration uptime;
        double now;
    };

    std::optional<Reading> last_;
    Duration start_{};
    int readings_ = 0;
    bool settling_ = false;
    std::optional<double> smoothed_;
    Duration smoothedAt_{};
    std::deque<Change> changes_;  ///< the first trusted amount, and each different one after it
    bool startsAtChange_ = false; ///< the first trusted amount has been dropped from them

    bool continues(const Reading& reading) const;
    void smooth(const Reading& reading, double rate);
    void follow(const Reading& reading);
    std::optional<double> derivedRate(const Reading& reading) const;
    std::optional<double> currentRate(const Reading& reading);
};
