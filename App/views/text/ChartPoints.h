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
    std::int64_t id = 0;  ///< the index of the sample in the window
    Date date;            ///< of the sample
    std::int64_t pct = 0; ///< its charge in percent
    std::int64_t seg = 0; ///< points with the same number are joined by a line
    bool operator==(const Point&) const = default;
};

/// The points of a chart that begins at `from`: thinned, from 600 on, to at least 300, with a new segment after each
/// gap, so that no line bridges a time of which nothing is known.
std::vector<Point> points(const HistoryStore& history, Date from);

/// The instants from `from` to `to` that the time axis marks: every sixth hour of the local clock or, for more than a
/// day, every local midnight.
std::vector<Date> timeMarks(Date from, Date to, const Calendar& calendar);

/// The label of the charge limit's rule, "Limit 80%".
std::string limitText(std::int64_t limit);

/// Describes the chart to screen readers: its range, the lowest and the highest charge. There must be at least one
/// point.
std::string chartDescription(const std::vector<Point>& points, std::int64_t days);
