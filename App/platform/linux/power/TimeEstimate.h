// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/linux/power/ChargeTaper.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

/// Estimates how long the battery lasts, or takes to fill, from successive readings. The momentary rate jumps with
/// every web page that loads, so it is averaged over what really flowed in the last hours, unless the load has
/// changed; and a battery that is nearly full takes less. The time told runs like a clock, which is corrected
/// slowly while it is nearly right. No time is given until it can be trusted.
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

    /// The time told never differs from the estimate by more than this factor, from 1 on; 1 tells the estimate itself.
    explicit TimeEstimate(double mostOff = 1.1) : mostOff_(mostOff) {}

    /// Takes a reading and returns the times as known now.
    Minutes update(const Reading& reading);

    /// Whether the time is unknown only because the run is too young: another reading soon will give it.
    bool isSettling() const { return settling_; }

private:
    struct Amount {
        Duration uptime;
        double now;
    };

    /// A mean rate, and for how many seconds it speaks; nothing at first.
    struct Mean {
        double rate = 0;
        double seconds = 0;
        /// Adds a rate that lasted for some seconds. After that the mean speaks for no more than `most` seconds.
        void add(double value, double lasted, double most);
    };

    /// The lowest and the highest rate seen; nothing at first, and then all others are allowed.
    struct Range {
        double lowest = std::numeric_limits<double>::max();
        double highest = 0;
        void add(double rate);
        bool allows(double rate, double factor) const; ///< whether it is among them, or differs by no more
    };

    /// What all runs in one direction have shown. Rates while charging are those of the plateau.
    struct Known {
        Mean mean;
        Mean shown;     ///< the mean as the next run begins with it
        Range means;    ///< of some minutes each
        Range reported; ///< by firmware
    };

    double mostOff_;
    std::optional<Reading> last_;
    Duration start_{};
    int readings_ = 0;
    bool settling_ = false;
    Mean reported_; ///< by firmware
    Duration reportedAt_{};
    std::optional<Amount> first_;   ///< the first trusted amount of this run
    std::optional<Amount> counted_; ///< the change up to which `known_` counts what flowed
    Amount latest_{};               ///< when the amount changed last
    double step_ = 0;               ///< what flowed last, in a minute or in a step of a coarse gauge
    Mean recent_;                   ///< of the last minutes
    bool isYoung_ = true;           ///< until `recent_` has covered enough of them once
    std::array<Known, 3> known_;    ///< for each flow
    ChargeTaper taper_;
    double steepest_ = 0;         ///< the highest slope of the taper that this charge has proved
    std::optional<Duration> end_; ///< when the battery will be empty or full, as told last
    Duration toldAt_{};

    bool continues(const Reading& reading) const;
    void begin(const Reading& reading);
    static Known usual(const Reading& reading); ///< for a charge of which nothing is known
    bool teaches(const Reading& reading) const;
    double missing(double now) const;          ///< part of full
    double level(double now) const;            ///< the amount, if none of it tapered
    double left(const Reading& reading) const; ///< the amount that has still to flow, if none of it tapered
    double moved(const Amount& since) const;   ///< the amount that has flowed, if none of it tapered
    void smooth(const Reading& reading, double rate);
    void learnTaper(double missing, double now, double plateau);
    void follow(const Reading& reading, Known& known);
    bool isDead(const Reading& reading) const; ///< a reported rate that has died down says no more than a missing one
    std::optional<double> currentRate(const Reading& reading);
    double hoursLeft(const Reading& reading, double rate) const;
    double steady(const Reading& reading, double hours);
};
