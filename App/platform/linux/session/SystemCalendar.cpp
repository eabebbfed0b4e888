// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/SystemCalendar.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <limits>

// Local times are searched for with localtime_r alone. For a time that the clock skips or shows twice, mktime()'s
// answer depends on earlier calls, and no argument says which of the two is meant.

namespace {

using Seconds = std::int64_t;

constexpr Seconds secondsOfDay = 86400;
constexpr Seconds secondsOfHour = 3600;
constexpr Seconds secondsOfMinute = 60;

/// More than any two places' clocks have ever differed, and more than any zone has ever been shifted.
constexpr Seconds furthestOffset = 2 * secondsOfDay;

/// This far from 1970, and some days further, whole seconds are exact in a double and their year fits the C library's
/// type.
constexpr double limit = 9e15;

std::optional<Seconds> wholeSeconds(Date date) {
    const double seconds = std::floor(date.time_since_epoch().count());
    if (!(std::abs(seconds) <= limit)) // also not a number
        return std::nullopt;
    return static_cast<Seconds>(seconds);
}

Date dateOf(Seconds seconds) {
    return Date(Duration(static_cast<double>(seconds)));
}

Seconds floorDivide(Seconds number, Seconds divisor) {
    return number / divisor - (number % divisor < 0 ? 1 : 0);
}

std::tm localFields(Seconds instant) {
    const std::time_t time = instant;
    std::tm fields{};
    localtime_r(&time, &fields);
    return fields;
}

/// What the local clock shows, as seconds since 1970-01-01 0:00 on that clock if every day had 24 hours.
Seconds localTime(Seconds instant) {
    const std::tm fields = localFields(instant);
    const Seconds yearsBefore = Seconds{fields.tm_year} + 1899;
    const Seconds leapDays =
        floorDivide(yearsBefore, 4) - floorDivide(yearsBefore, 100) + floorDivide(yearsBefore, 400);
    constexpr Seconds daysBefore1970 = 719162;
    const Seconds days = 365 * yearsBefore + leapDays + fields.tm_yday - daysBefore1970;
    // A leap second, which zones under "right/" have, belongs to the minute that it ends.
    return days * secondsOfDay + fields.tm_hour * secondsOfHour + fields.tm_min * secondsOfMinute +
           std::min(fields.tm_sec, 59);
}

/// The first instant after `from` at which the offset from UTC differs from that at `from`; at most `to`.
Seconds nextChange(Seconds from, Seconds to) {
    const Seconds offset = localTime(from) - from;
    const auto isChanged = [offset](Seconds instant) { return localTime(instant) - instant != offset; };
    while (from < to) {
        // A change that is reversed within one step would be missed. In the time zone database (2025b) no two changes
        // of a zone are less than 95 hours apart.
        Seconds next = std::min(from + secondsOfDay, to);
        if (isChanged(next)) {
            while (next - from > 1) {
                const Seconds middle = from + (next - from) / 2;
                (isChanged(middle) ? next : from) = middle;
            }
            return next;
        }
        from = next;
    }
    return to;
}

/// The first instant from `from` on at which the clock shows a time in [`lower`, `upper`); at most `to`.
Seconds firstInstant(Seconds from, Seconds to, Seconds lower, Seconds upper) {
    while (from < to) {
        const Seconds change = nextChange(from, to);
        const Seconds local = localTime(from);
        const Seconds wait = std::max<Seconds>(0, lower - local);
        if (from + wait < change && local + wait < upper)
            return from + wait;
        from = change;
    }
    return to;
}

/// The first instant at which the clock shows that time or, if it skips it, a later one.
Seconds firstInstantOf(Seconds local) {
    return firstInstant(local - furthestOffset, local + furthestOffset, local, std::numeric_limits<Seconds>::max());
}

} // namespace

Calendar::TimeOfDay SystemCalendar::timeOfDay(Date date) const {
    const auto instant = wholeSeconds(date);
    if (!instant)
        return {};
    tzset(); // localtime_r alone need not notice a new time zone
    const std::tm fields = localFields(*instant);
    return {.hour = fields.tm_hour, .minute = fields.tm_min};
}

Calendar::Day SystemCalendar::day(Date date) const {
    const auto instant = wholeSeconds(date);
    if (!instant)
        return {.start = date, .until = date};
    tzset();
    const Seconds midnight = floorDivide(localTime(*instant), secondsOfDay) * secondsOfDay;
    const Seconds nextMidnight = midnight + secondsOfDay;
    const Seconds start = firstInstant(*instant - furthestOffset, *instant, midnight, nextMidnight);
    Seconds until = *instant;
    for (Seconds local = localTime(until); midnight <= local && local < nextMidnight; local = localTime(until))
        until = nextChange(until, until + (nextMidnight - local));
    return {.start = dateOf(start), .until = dateOf(until)};
}

std::optional<Date> SystemCalendar::at(Date date, TimeOfDay time) const {
    const auto instant = wholeSeconds(date);
    if (!instant)
        return std::nullopt;
    tzset();
    const Seconds midnight = floorDivide(localTime(*instant), secondsOfDay) * secondsOfDay;
    return dateOf(firstInstantOf(midnight + time.hour * secondsOfHour + time.minute * secondsOfMinute));
}

std::optional<Date> SystemCalendar::addingDays(Date date, std::int64_t days) const {
    const auto instant = wholeSeconds(date);
    constexpr auto mostDays = static_cast<std::int64_t>(2 * limit) / secondsOfDay;
    if (!instant || days < -mostDays || days > mostDays)
        return std::nullopt;
    if (days == 0)
        return date;
    tzset();
    const Seconds local = localTime(*instant) + days * secondsOfDay;
    if (!wholeSeconds(dateOf(local)))
        return std::nullopt;
    const Seconds found = firstInstantOf(local);
    const bool isSkipped = localTime(found) != local;
    return dateOf(found) + (isSkipped ? Duration(0) : date - dateOf(*instant));
}
