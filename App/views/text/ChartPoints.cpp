// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/ChartPoints.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>

using namespace std::chrono_literals;

std::vector<Point> points(const HistoryStore& history, Date from) {
    constexpr std::size_t enough = 300;
    constexpr double longestGap = 900; ///< seconds, between consecutive samples
    constexpr double minute = 60;      ///< seconds that each sample left out adds to a gap

    const SampleList::Tail samples = history.samplesSince(from);
    const std::size_t step = std::max<std::size_t>(samples.size() / enough, 1);
    const double gap = static_cast<double>(step) * minute + longestGap;
    std::vector<Point> kept;
    const auto keep = [&](std::size_t i) {
        const Sample sample = samples[i];
        std::int64_t seg = 0;
        if (!kept.empty())
            seg = kept.back().seg + (sample.t - kept.back().date.time_since_epoch().count() > gap ? 1 : 0);
        kept.push_back({.id = static_cast<std::int64_t>(i), .date = sample.date(), .pct = sample.p, .seg = seg});
    };
    for (std::size_t i = 0; i < samples.size(); i += step)
        keep(i);
    if (!samples.empty() && (samples.size() - 1) % step != 0)
        keep(samples.size() - 1);
    return kept;
}

std::vector<Date> timeMarks(Date from, Date to, const Calendar& calendar) {
    const std::vector<int> hours = to - from > 25h ? std::vector{0} : std::vector{0, 6, 12, 18};
    std::vector<Date> marks;
    for (Date date = from; date <= to;) {
        const Calendar::Day day = calendar.day(date);
        for (const int hour : hours) {
            const std::optional<Date> mark = calendar.at(date, {.hour = hour, .minute = 0});
            if (mark && *mark >= from && *mark <= to)
                marks.push_back(*mark);
        }
        if (day.until <= date) // the calendar cannot convert this time
            break;
        date = day.until;
    }
    return marks;
}

std::string limitText(std::int64_t limit) {
    return "Limit " + std::to_string(limit) + "%";
}

std::string chartDescription(const std::vector<Point>& points, std::int64_t days) {
    const auto [lowest, highest] = std::ranges::minmax_element(points, {}, &Point::pct);
    return std::string("Charge of the last ") + (days == 1 ? "24 hours" : std::to_string(days) + " days") +
           ", lowest " + std::to_string(lowest->pct) + " %, highest " + std::to_string(highest->pct) + " %";
}
