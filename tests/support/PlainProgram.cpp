// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PlainProgram.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace {

std::string printed(const char* format, double number) {
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

std::tm localFields(double time) {
    const auto seconds = static_cast<std::time_t>(std::floor(time));
    std::tm fields{};
    ::tzset(); // the zone may have been changed
    localtime_r(&seconds, &fields);
    return fields;
}

std::string localText(double time, const char* format) {
    const std::tm fields = localFields(time);
    char text[64];
    std::strftime(text, sizeof text, format, &fields);
    return text;
}

/// The midnight so many days before the day of that time.
double midnight(double time, int daysBefore = 0) {
    std::tm fields = localFields(time);
    fields.tm_mday -= daysBefore;
    fields.tm_hour = fields.tm_min = fields.tm_sec = 0;
    fields.tm_isdst = -1;
    return static_cast<double>(std::mktime(&fields));
}

std::string span(std::int64_t minutes) {
    if (minutes < 60)
        return std::to_string(minutes < 1 ? 1 : minutes) + " min";
    return std::to_string(minutes / 60) + " h" + (minutes % 60 ? " " + std::to_string(minutes % 60) + " min" : "");
}

} // namespace

std::string plainTime(double time) {
    return localText(time, "%H:%M");
}

PlainProgram::Preferences::Preferences()
    : switches{{"limitEnabled", true},  {"repeatReminder", true},  {"lowEnabled", true},
               {"longEnabled", true},   {"lowPowerEnabled", true}, {"healthEnabled", true},
               {"quietEnabled", false}, {"showPercent", true},     {"showTime", false}}
    , numbers{{"limit", 80}, {"low", 20}, {"longHours", 8}, {"lowPowerAt", 30}, {"quietStart", 1320}, {"quietEnd", 420}}
    , sounds{{"limitSound", "default"},
             {"lowSound", "default"},
             {"longSound", "default"},
             {"lowPowerSound", "default"},
             {"healthSound", "default"}} {}

void PlainProgram::read(const PlainLaptop& laptop, double now, bool onSchedule, bool follows) {
    seen_ = laptop;
    drawn = charted = now;
    if (!(laptop.hasBattery && laptop.pluggedIn))
        since_.reset();
    else if (!since_)
        since_ = now;
    if (!follows && snoozed && *snoozed <= now)
        snoozed.reset();
    if (!laptop.hasBattery)
        return;
    const Remembered sample{now, laptop.percent, laptop.charges, laptop.pluggedIn};
    const bool isNews = history.empty() || history.back().percent != sample.percent ||
                        history.back().charges != sample.charges || history.back().pluggedIn != sample.pluggedIn;
    if (onSchedule || isNews)
        history.push_back(sample);
}

bool PlainProgram::isFull() const {
    return seen_.isFull || (seen_.pluggedIn && !seen_.charges && seen_.percent == 100);
}

std::string PlainProgram::symbol() const {
    if (!seen_.hasBattery)
        return "battery.0";
    if (isFull())
        return "battery.100percent";
    if (seen_.charges)
        return "battery.100.bolt";
    if (seen_.pluggedIn)
        return "powerplug.fill";
    const int levels[] = {13, 38, 63, 88};
    const char* names[] = {"battery.0", "battery.25", "battery.50", "battery.75", "battery.100"};
    return names[std::count_if(std::begin(levels), std::end(levels),
                               [&](int level) { return seen_.percent >= level; })];
}

std::string PlainProgram::numberSymbol() const {
    const std::string time = shownTime();
    const bool percent = wants.switches.at("showPercent");
    if (!seen_.hasBattery || (!percent && time.empty()))
        return "";
    const std::string meaning = isFull() ? "full" : seen_.charges ? "bolt" : seen_.pluggedIn ? "plug" : "level";
    return (percent ? "percent" : "time." + time) + "." + std::to_string(seen_.percent) + "." + meaning;
}

std::string PlainProgram::shownTime() const {
    const bool counts = !isFull() && (seen_.charges || !seen_.pluggedIn) && seen_.minutes;
    if (!wants.switches.at("showTime") || !counts)
        return "";
    char time[16];
    std::snprintf(time, sizeof time, "%d:%02d", *seen_.minutes / 60, *seen_.minutes % 60);
    return time;
}

std::string PlainProgram::title() const {
    std::string text;
    if (!seen_.hasBattery)
        return text;
    if (wants.switches.at("showPercent"))
        text = " " + std::to_string(seen_.percent) + "%";
    const std::string time = shownTime();
    if (!time.empty())
        text += (text.empty() ? " " : " · ") + time;
    return text;
}

std::string PlainProgram::widestTitle() const {
    const bool percent = wants.switches.at("showPercent");
    const bool time = wants.switches.at("showTime");
    if (percent && time)
        return " 100% · 00:00";
    return percent ? " 100%" : time ? " 00:00" : "";
}

std::string PlainProgram::stateText() const {
    if (!seen_.hasBattery)
        return "No battery found";
    if (isFull())
        return "Fully charged";
    if (seen_.charges)
        return seen_.minutes ? "Charging, " + span(*seen_.minutes) + " to full" : "Charging, estimating time to full…";
    if (seen_.pluggedIn)
        return "Plugged in, not charging";
    return seen_.minutes ? "On battery, " + span(*seen_.minutes) + " left" : "On battery, estimating time left…";
}

std::string PlainProgram::toolTip() const {
    if (!seen_.hasBattery)
        return stateText();
    const double health = 100.0 * seen_.full / seen_.design;
    return std::to_string(seen_.percent) + "% · " + stateText() + "\nHealth: " + printed("%.0f", health) + "% (" +
           (health > 90    ? "Good"
            : health >= 80 ? "Fair"
                           : "Worn") +
           ")\nCycles: " + std::to_string(seen_.cycles);
}

std::vector<std::string> PlainProgram::menu() const {
    return {"Show details", snoozed ? "Cancel snooze (until " + plainTime(*snoozed) + ")" : "Snooze alerts for 1 hour",
            "Settings…", "Quit"};
}

std::string PlainProgram::ringColor() const {
    if (!seen_.pluggedIn && seen_.percent <= 20)
        return "red";
    return seen_.charges || isFull() ? "green" : "accent";
}

std::string PlainProgram::ringWords() const {
    return std::to_string(seen_.percent) + " %, " +
           (isFull()          ? "fully charged"
            : seen_.charges   ? "charging"
            : seen_.pluggedIn ? "plugged in, not charging"
                              : "on battery");
}

std::optional<std::string> PlainProgram::pluggedInText() const {
    if (!since_)
        return std::nullopt;
    return "Plugged in for " + span(static_cast<std::int64_t>((drawn - *since_) / 60));
}

std::optional<std::string> PlainProgram::snoozeText() const {
    if (!snoozed)
        return std::nullopt;
    return "Alerts snoozed until " + plainTime(*snoozed);
}

std::string PlainProgram::cycles() const {
    return std::to_string(seen_.cycles) + " of 1000";
}

std::vector<std::string> PlainProgram::details() const {
    const double health = 100.0 * seen_.full / seen_.design;
    std::vector<std::string> rows{"Battery health: " + printed("%.0f", health) + "% · " +
                                      (health > 90    ? "Good"
                                       : health >= 80 ? "Fair"
                                                      : "Worn"),
                                  "Temperature: " + printed("%.1f", seen_.hundredthsOfDegree / 100.0) + " °C"};
    const double watts = seen_.millivolts / 1000.0 * seen_.milliamperes / 1000.0;
    if (std::fabs(watts) >= 0.1)
        rows.push_back((watts > 0 ? "Power in: " : "Power out: ") + printed("%.1f", std::fabs(watts)) + " W");
    if (seen_.pluggedIn && seen_.adapterWatts > 0)
        rows.push_back("Adapter: " + std::to_string(seen_.adapterWatts) + " W");
    return rows;
}

std::vector<PlainProgram::Remembered> PlainProgram::inWindow(double from) const {
    std::vector<Remembered> found;
    for (const Remembered& sample : history) {
        if (!found.empty() || sample.time >= from)
            found.push_back(sample);
    }
    return found;
}

std::vector<PlainProgram::ChartPoint> PlainProgram::chart() const {
    const std::vector<Remembered> samples = inWindow(charted - days * 86400.0);
    const std::size_t step = samples.size() < 300 ? 1 : samples.size() / 300;
    std::vector<ChartPoint> points;
    std::optional<double> before;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i % step != 0 && i != samples.size() - 1)
            continue;
        const double time = samples[i].time;
        if (before && time - *before > 900 + 60.0 * static_cast<double>(step))
            points.push_back({time, std::nullopt});
        points.push_back({time, samples[i].percent});
        before = time;
        ++kept;
    }
    return kept < 2 ? std::vector<ChartPoint>() : points;
}

std::string PlainProgram::chartWords() const {
    int lowest = 100;
    int highest = 0;
    for (const ChartPoint& point : chart()) {
        lowest = std::min(lowest, point.percent.value_or(100));
        highest = std::max(highest, point.percent.value_or(0));
    }
    if (chart().empty())
        return "Collecting history… a graph appears after a few minutes.";
    return std::string("Charge of the last ") + (days == 1 ? "24 hours" : "7 days") + ", lowest " +
           std::to_string(lowest) + " %, highest " + std::to_string(highest) + " %";
}

std::vector<std::vector<std::string>> PlainProgram::table() const {
    struct Day {
        double seconds = 0, sum = 0, charging = 0;
        int lowest = 100, highest = 0;
    };
    std::map<double, Day> byDay;
    const std::vector<Remembered> samples = inWindow(midnight(drawn, 6));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        Day& day = byDay[midnight(samples[i].time)];
        day.lowest = std::min(day.lowest, samples[i].percent);
        day.highest = std::max(day.highest, samples[i].percent);
        const double length = i + 1 < samples.size() ? samples[i + 1].time - samples[i].time : 0;
        if (length <= 0 || length > 900)
            continue;
        day.seconds += length;
        day.sum += length * samples[i].percent;
        day.charging += samples[i].charges ? length : 0;
    }
    std::vector<std::vector<std::string>> rows;
    for (const auto& [start, day] : byDay) {
        const long average = day.seconds > 0 ? std::lround(day.sum / day.seconds) : day.highest;
        rows.insert(rows.begin(), {localText(start, "%a ") + std::to_string(localFields(start).tm_mday),
                                   std::to_string(average) + "%",
                                   std::to_string(day.lowest) + "–" + std::to_string(day.highest) + "%",
                                   day.charging < 60 ? "–" : span(static_cast<std::int64_t>(day.charging / 60))});
    }
    return rows;
}
