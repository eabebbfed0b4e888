// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/linux/power/ChargeTaper.h"

#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>

/// Estimates how long the battery lasts, or takes to fill, from successive readings. The momentary rate jumps with
/// every web page that loads, so it is smoothed and checked against what really flowed, over the longer the more is
/// left, unless the load has changed; and a battery that is nearly full takes less. No time is given until it can be
/// trusted.
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
        std::optional<double> recent; ///< the mean rate of the window that ends here, once there is a whole one
    };

    /// The lowest and the highest rate seen; nothing at first.
    struct Range {
        double lowest = std::numeric_limits<double>::max();
        double highest = 0;
        void add(double rate);
        bool allows(double rate) const; ///< whether it is among them, with some tolerance
    };

    /// What a run has shown, for the next one in the same direction. Rates while charging are those of the plateau.
    struct Past {
        double rate = 0;
        Range recent{};   ///< of the means of whole windows; nothing if the run was shorter
        Range reported{}; ///< of the rates that firmware reported
    };

    std::optional<Reading> last_;
    Duration start_{};
    int readings_ = 0;
    bool settling_ = false;
    std::optional<double> smoothed_;
    Duration smoothedAt_{};
    std::deque<Change> changes_;  ///< the first trusted amount, and different ones after it
    bool startsAtChange_ = false; ///< the first trusted amount has been dropped from them
    Past run_;
    std::array<std::optional<Past>, 3> past_; ///< of the last run with each flow
    ChargeTaper taper_;
    double steepest_ = 0; ///< the highest slope of the taper that this charge has proved

    bool continues(const Reading& reading) const;
    void begin(const Reading& reading);
    double missing(double now) const;          ///< part of full
    double level(double now) const;            ///< the amount, if none of it tapered
    double left(const Reading& reading) const; ///< the amount that has still to flow, if none of it tapered
    void smooth(const Reading& reading, double rate);
    void learnTaper(double missing, double plateau);
    void follow(const Reading& reading);
    std::optional<double> derivedRate(const Reading& reading, double window) const;
    bool teaches(const Reading& reading) const;
    bool hasWholeWindow(const Reading& reading) const;
    std::optional<double> recentRate(const Reading& reading);
    std::optional<Past> past(const Reading& reading) const;
    std::optional<double> currentRate(const Reading& reading);
};
