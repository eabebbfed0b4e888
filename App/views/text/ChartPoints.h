// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryStore.h"
#include "platform/Calendar.h"
#include "platform/Clock.h"

#include <cstdint>
#include <string>
#include <vector>

/// One point of the history chart.
struct Point {
    std::int64_t id = 0;  ///< the number of the sample in the window
    Date date;            ///< of the sample
    std::int64_t pct = 0; ///< its charge in percent
    std::int64_t seg = 0; ///< points of one number are joined by a line
    bool operator==(const Point&) const = default;
};

/// The points of the chart whose window begins at `from`: thinned to some 300, and a new segment after each gap, so
/// that time of which nothing is known is not bridged by a line.
std::vector<Point> points(const HistoryStore& history, Date from);

/// The instants between the two that the time axis marks: every sixth hour of the local clock or, for more than a day,
/// every local midnight.
std::vector<Date> timeMarks(Date from, Date to, const Calendar& calendar);

/// What stands at the line of the charge limit, "Limit 80%".
std::string limitText(std::int64_t limit);

/// What the chart is for those who cannot see it: its range, the lowest and the highest charge. There must be a point.
std::string chartDescription(const std::vector<Point>& points, std::int64_t days);
