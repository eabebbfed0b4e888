// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// What a laptop says of itself.
struct PlainLaptop {
    bool hasBattery = true;
    int percent = 0;
    bool pluggedIn = false;
    bool charges = false;
    bool isFull = false;             ///< as it says itself
    std::optional<int> minutes = {}; ///< to full while it charges, else to empty
    int cycles = 0;
    int design = 5000;
    int full = 4600;
    int hundredthsOfDegree = 3120;
    int millivolts = 11900;
    int milliamperes = 0;
    int adapterWatts = 65; ///< 0 for none
};

/// What each surface of the program must say, reckoned anew from what the laptop said at its last reading and what the
/// user chose. Written for the tests, and plain rather than fast: it has nothing of the program's own in it.
class PlainProgram {
public:
    struct Preferences {
        std::map<std::string, bool> switches;
        std::map<std::string, int> numbers;
        std::map<std::string, std::string> sounds;

        /// Those of a fresh installation.
        Preferences();
    };

    struct Remembered {
        double time = 0;
        int percent = 0;
        bool charges = false;
        bool pluggedIn = false;
    };

    struct ChartPoint {
        double time = 0;
        std::optional<int> percent; ///< empty where the line is interrupted
    };

    Preferences wants;
    std::vector<Remembered> history;
    std::optional<double> snoozed; ///< until when, as it is shown
    double drawn = 0;              ///< when the popover was brought up to date
    double charted = 0;            ///< when its chart was
    int days = 1;                  ///< of the chart

    /// The battery is read. `onSchedule` by the minute, at the start or after waking, which is always remembered;
    /// `follows` at the start or after waking, when a snooze that has run out is not noticed.
    void read(const PlainLaptop& laptop, double now, bool onSchedule, bool follows);

    /// Since when it is plugged in by the history that the program found.
    void pluggedInSince(double time) { since_ = time; }

    std::string symbol() const;
    std::string numberSymbol() const;
    std::string title() const;
    std::string widestTitle() const;
    std::string toolTip() const;
    std::vector<std::string> menu() const;

    bool hasBattery() const { return seen_.hasBattery; }
    int percent() const { return seen_.percent; }
    std::string ringColor() const; ///< "red", "green" or "accent"
    std::string ringWords() const;
    std::string stateText() const;
    std::optional<std::string> pluggedInText() const;
    std::optional<std::string> snoozeText() const;
    std::string cycles() const;
    std::vector<std::string> details() const;
    std::vector<ChartPoint> chart() const; ///< empty for less than two points
    std::string chartWords() const;
    std::vector<std::vector<std::string>> table() const; ///< a row for each day, without the header

private:
    PlainLaptop seen_{.hasBattery = false};
    std::optional<double> since_;

    bool isFull() const;
    std::string shownTime() const;
    std::vector<Remembered> inWindow(double from) const;
};

/// "14:05", by the local clock.
std::string plainTime(double time);
