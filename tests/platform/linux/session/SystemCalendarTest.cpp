// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/SystemCalendar.h"

#include "support/CalendarContract.h"
#include "support/TemporaryFolder.h"
#include "support/TimeZone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>
#include <vector>

namespace {

Date at(std::time_t seconds) {
    return Date(Duration(static_cast<double>(seconds)));
}

/// Parses a UTC time like "2024-11-15 06:00:00"; not for a zone that counts leap seconds.
Date utc(const std::string& text) {
    std::tm fields{};
    EXPECT_NE(::strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &fields), nullptr) << text;
    return at(::timegm(&fields));
}

std::string utcText(Date date) {
    const auto seconds = static_cast<std::time_t>(date.time_since_epoch().count());
    std::tm fields{};
    char text[32] = "";
    if (::gmtime_r(&seconds, &fields) != nullptr)
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields);
    return text;
}

void expectTime(Calendar::TimeOfDay time, int hour, int minute) {
    EXPECT_EQ(time.hour, hour);
    EXPECT_EQ(time.minute, minute);
}

} // namespace

TEST(SystemCalendar, FollowsTheZone) {
    const SystemCalendar calendar;
    const Date date = at(1731650399);
    const TimeZone outer("UTC0");
    expectTime(calendar.timeOfDay(date), 5, 59);
    EXPECT_EQ(utcText(calendar.day(date).start), "2024-11-15 00:00:00");
    // Changes TZ without calling tzset().
    ::setenv("TZ", "IST-5:30", 1);
    expectTime(calendar.timeOfDay(date), 11, 29);
    ::setenv("TZ", "CET-1", 1);
    EXPECT_EQ(utcText(calendar.day(date).start), "2024-11-14 23:00:00");
    ::setenv("TZ", "Europe/Berlin", 1);
    EXPECT_EQ(utcText(*calendar.addingDays(utc("2024-03-30 11:00:00"), 1)), "2024-03-31 10:00:00");
}

// The expected times come from Python's zoneinfo module (tzdata 2025b), by a search through every second.
TEST(SystemCalendar, TellsTheDay) {
    struct Row {
        const char* zone;
        const char* asked;
        const char* start;
        const char* until;
    };
    const Row rows[] = {
        {"UTC", "2024-02-29 12:00:00", "2024-02-29 00:00:00", "2024-03-01 00:00:00"},
        {"UTC", "1969-12-31 23:59:59", "1969-12-31 00:00:00", "1970-01-01 00:00:00"},
        // Days of 23 and of 25 hours.
        {"Europe/Berlin", "2024-03-31 00:59:59", "2024-03-30 23:00:00", "2024-03-31 22:00:00"},
        {"Europe/Berlin", "2024-03-31 12:00:00", "2024-03-30 23:00:00", "2024-03-31 22:00:00"},
        {"Europe/Berlin", "2024-10-27 00:30:00", "2024-10-26 22:00:00", "2024-10-27 23:00:00"},
        {"Europe/Berlin", "2024-10-27 01:30:00", "2024-10-26 22:00:00", "2024-10-27 23:00:00"},
        // Days without a midnight.
        {"Africa/Cairo", "2023-04-27 21:59:59", "2023-04-26 22:00:00", "2023-04-27 22:00:00"},
        {"Africa/Cairo", "2023-04-27 22:00:00", "2023-04-27 22:00:00", "2023-04-28 21:00:00"},
        {"Africa/Cairo", "2023-04-28 12:00:00", "2023-04-27 22:00:00", "2023-04-28 21:00:00"},
        {"America/Sao_Paulo", "2018-11-04 02:59:59", "2018-11-03 03:00:00", "2018-11-04 03:00:00"},
        {"America/Sao_Paulo", "2018-11-04 03:00:00", "2018-11-04 03:00:00", "2018-11-05 02:00:00"},
        {"Asia/Beirut", "2023-03-26 12:00:00", "2023-03-25 22:00:00", "2023-03-26 21:00:00"},
        {"Asia/Beirut", "2023-03-29 22:00:00", "2023-03-29 21:00:00", "2023-03-30 21:00:00"},
        // A day with two midnights.
        {"America/Havana", "2023-11-05 04:30:00", "2023-11-05 04:00:00", "2023-11-06 05:00:00"},
        {"America/Havana", "2023-11-05 05:30:00", "2023-11-05 04:00:00", "2023-11-06 05:00:00"},
        // At midnight the clock goes back to 23:00, so the day that has just ended lasts another hour.
        {"America/Sao_Paulo", "2018-02-18 01:30:00", "2018-02-17 02:00:00", "2018-02-18 03:00:00"},
        {"America/Sao_Paulo", "2018-02-18 02:30:00", "2018-02-17 02:00:00", "2018-02-18 03:00:00"},
        {"America/Sao_Paulo", "2018-02-18 03:00:00", "2018-02-18 03:00:00", "2018-02-19 03:00:00"},
        // The clock goes back across midnight: a minute of the 29th, 59 minutes of the 28th again, then the 29th.
        {"America/St_Johns", "2006-10-29 02:00:00", "2006-10-28 02:30:00", "2006-10-29 02:30:00"},
        {"America/St_Johns", "2006-10-29 02:30:30", "2006-10-29 02:30:00", "2006-10-29 02:31:00"},
        {"America/St_Johns", "2006-10-29 03:00:00", "2006-10-28 02:30:00", "2006-10-29 03:30:00"},
        {"America/St_Johns", "2006-10-29 12:00:00", "2006-10-29 02:30:00", "2006-10-30 03:30:00"},
        // Zones that skip a date: Apia 2011-12-30, Kwajalein 1993-08-21.
        {"Pacific/Apia", "2011-12-30 09:59:59", "2011-12-29 10:00:00", "2011-12-30 10:00:00"},
        {"Pacific/Apia", "2011-12-30 10:00:00", "2011-12-30 10:00:00", "2011-12-31 10:00:00"},
        {"Pacific/Kwajalein", "1993-08-20 12:00:00", "1993-08-20 12:00:00", "1993-08-21 12:00:00"},
        // A date that lasts 47 hours, and one that comes twice.
        {"Pacific/Kwajalein", "1969-10-01 11:00:00", "1969-09-29 13:00:00", "1969-10-01 12:00:00"},
        {"America/Juneau", "1867-10-18 12:00:00", "1867-10-18 08:57:41", "1867-10-19 00:31:13"},
        // UTC offsets and clock changes that are not whole hours.
        {"Asia/Kolkata", "2024-11-15 18:29:59", "2024-11-14 18:30:00", "2024-11-15 18:30:00"},
        {"Asia/Kolkata", "2024-11-15 18:30:00", "2024-11-15 18:30:00", "2024-11-16 18:30:00"},
        {"Asia/Kathmandu", "2024-11-15 18:15:00", "2024-11-15 18:15:00", "2024-11-16 18:15:00"},
        {"Pacific/Chatham", "2024-09-28 14:00:00", "2024-09-28 11:15:00", "2024-09-29 10:15:00"},
        {"Australia/Lord_Howe", "2024-04-06 15:15:00", "2024-04-06 13:00:00", "2024-04-07 13:30:00"},
        {"Australia/Lord_Howe", "2024-10-05 16:00:00", "2024-10-05 13:30:00", "2024-10-06 13:00:00"},
        {"Africa/Monrovia", "1971-06-01 12:00:00", "1971-06-01 00:44:30", "1971-06-02 00:44:30"},
        // Long ago and far ahead.
        {"Europe/Berlin", "1945-05-24 12:00:00", "1945-05-23 22:00:00", "1945-05-24 21:00:00"},
        {"America/New_York", "1901-07-04 12:00:00", "1901-07-04 05:00:00", "1901-07-05 05:00:00"},
        {"America/Sao_Paulo", "1033-04-03 12:00:00", "1033-04-03 03:06:28", "1033-04-04 03:06:28"},
        {"Europe/Berlin", "2100-06-15 12:00:00", "2100-06-14 22:00:00", "2100-06-15 22:00:00"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.zone) + " " + row.asked);
        const TimeZone zone(row.zone);
        const Calendar::Day day = SystemCalendar().day(utc(row.asked));
        EXPECT_EQ(utcText(day.start), row.start);
        EXPECT_EQ(utcText(day.until), row.until);
    }
}

// The expected times come from Python's zoneinfo module (tzdata 2025b): the first second at which the wall clock shows
// the wanted time or a later one.
TEST(SystemCalendar, AddsDays) {
    struct Row {
        const char* zone;
        const char* asked;
        int days;
        const char* expected;
    };
    const Row rows[] = {
        {"UTC", "2024-02-28 12:00:00", 1, "2024-02-29 12:00:00"},
        {"UTC", "2024-03-01 12:00:00", -1, "2024-02-29 12:00:00"},
        {"UTC", "1970-01-01 00:00:00", -1, "1969-12-31 00:00:00"},
        {"UTC", "2024-02-29 06:30:00", -365000, "1024-10-29 06:30:00"},
        // Across a clock change, into the gap from either side, into the hour that comes twice, out of its second pass.
        {"Europe/Berlin", "2024-03-30 11:15:00", 1, "2024-03-31 10:15:00"},
        {"Europe/Berlin", "2024-03-30 01:30:00", 1, "2024-03-31 01:00:00"},
        {"Europe/Berlin", "2024-04-01 00:30:00", -1, "2024-03-31 01:00:00"},
        {"Europe/Berlin", "2024-10-26 00:30:00", 1, "2024-10-27 00:30:00"},
        {"Europe/Berlin", "2024-10-28 01:30:00", -1, "2024-10-27 00:30:00"},
        {"Europe/Berlin", "2024-10-27 01:30:00", 1, "2024-10-28 01:30:00"},
        {"Africa/Cairo", "2023-04-26 22:00:00", 1, "2023-04-27 22:00:00"},
        {"Africa/Cairo", "2023-04-26 22:30:00", 1, "2023-04-27 22:00:00"},
        {"America/Sao_Paulo", "2018-11-03 03:00:00", 1, "2018-11-04 03:00:00"},
        {"America/Havana", "2023-11-04 04:00:00", 1, "2023-11-05 04:00:00"},
        {"America/Havana", "2023-11-04 04:30:00", 1, "2023-11-05 04:30:00"},
        {"America/Sao_Paulo", "2018-02-17 01:30:00", 1, "2018-02-18 01:30:00"},
        {"America/Sao_Paulo", "2018-02-17 02:00:00", 1, "2018-02-18 03:00:00"},
        {"America/St_Johns", "2006-10-28 02:30:30", 1, "2006-10-29 02:30:30"},
        {"America/St_Johns", "2006-10-28 02:00:00", 1, "2006-10-29 02:00:00"},
        // Onto and across a date that the zone skips.
        {"Pacific/Apia", "2011-12-29 20:00:00", 1, "2011-12-30 10:00:00"},
        {"Pacific/Apia", "2011-12-29 20:00:00", 2, "2011-12-30 20:00:00"},
        {"Pacific/Apia", "2011-12-30 20:00:00", -1, "2011-12-30 10:00:00"},
        {"Pacific/Apia", "2011-12-30 20:00:00", -2, "2011-12-29 20:00:00"},
        {"Pacific/Kwajalein", "1969-09-29 13:30:00", 1, "1969-10-01 12:30:00"},
        {"Asia/Kathmandu", "2024-11-15 18:15:00", -30, "2024-10-16 18:15:00"},
        {"Australia/Lord_Howe", "2024-10-04 15:45:00", 1, "2024-10-05 15:30:00"},
        {"Australia/Lord_Howe", "2024-04-05 14:45:00", 1, "2024-04-06 14:45:00"},
        {"Europe/Berlin", "2100-06-15 12:00:00", -36500, "2000-07-09 12:00:00"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.zone) + " " + row.asked + " " + std::to_string(row.days));
        const TimeZone zone(row.zone);
        const auto later = SystemCalendar().addingDays(utc(row.asked), row.days);
        ASSERT_TRUE(later);
        EXPECT_EQ(utcText(*later), row.expected);
    }
}

TEST(SystemCalendar, KeepsAFractionUnlessTheClockSkipsIt) {
    const TimeZone zone("Europe/Berlin");
    const SystemCalendar calendar;
    EXPECT_EQ(calendar.addingDays(utc("2024-03-30 00:30:00") + Duration(0.5), 1),
              utc("2024-03-31 00:30:00") + Duration(0.5));
    EXPECT_EQ(calendar.addingDays(utc("2024-03-30 01:30:00") + Duration(0.5), 1), utc("2024-03-31 01:00:00"));
    EXPECT_EQ(calendar.day(utc("2024-03-31 22:00:00") - Duration(0.25)).until, utc("2024-03-31 22:00:00"));
    EXPECT_EQ(calendar.addingDays(utc("2024-10-27 01:30:00"), 0), utc("2024-10-27 01:30:00"))
        << "also the second pass of an hour is itself";
}

namespace {

/// A zone file in the oldest format of tzfile(5): UTC with a single leap second, 2016-12-31 23:59:60. Debian's tzdata
/// no longer has zones that count leap seconds, but users can have their own.
constexpr char leapSecondZone[] = "TZif\0"                           // version 1 of the format
                                  "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"   // fifteen unused bytes
                                  "\0\0\0\0\0\0\0\0"                 // no indicators
                                  "\0\0\0\1\0\0\0\0\0\0\0\1\0\0\0\4" // one leap second, no change, one type, one name
                                  "\0\0\0\0\0\0UTC\0"                // the type and its name
                                  "\x58\x68\x46\x80\0\0\0\1";        // one second more from 2016-12-31 23:59:60 on
constexpr std::time_t leapSecond = 0x58684680;

} // namespace

TEST(SystemCalendar, GivesALeapSecondToTheDayThatItEnds) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path / "zone";
    write(file, std::string(leapSecondZone, sizeof leapSecondZone - 1));
    const TimeZone zone(file.c_str());
    std::tm fields{};
    ::localtime_r(&leapSecond, &fields);
    ASSERT_EQ(fields.tm_sec, 60) << "the zone counts it";

    const SystemCalendar calendar;
    for (const double after : {-1.0, 0.0, 0.5}) {
        const Calendar::Day day = calendar.day(at(leapSecond) + Duration(after));
        EXPECT_EQ(day.start, at(leapSecond - 86400));
        EXPECT_EQ(day.until, at(leapSecond + 1));
    }
    EXPECT_EQ(calendar.day(at(leapSecond + 1)).start, at(leapSecond + 1));
    EXPECT_EQ(calendar.addingDays(at(leapSecond - 60), 1), at(leapSecond + 1 + 86340));
}

namespace {

/// Reads the local clock at every minute around one instant and derives days from these readings alone.
class MinuteWalk {
public:
    static constexpr std::time_t minutesEachWay = 4 * 1440;

    explicit MinuteWalk(std::time_t middle) : first_(middle - minutesEachWay * 60) {
        for (std::time_t minute = 0; minute <= 2 * minutesEachWay; ++minute) {
            const std::time_t instant = first_ + minute * 60;
            std::tm fields{};
            ::localtime_r(&instant, &fields);
            const std::time_t local = instant + fields.tm_gmtoff;
            local_.push_back(local);
            latest_.push_back(latest_.empty() ? local : std::max(latest_.back(), local));
            dates_.push_back(fields.tm_year * 400 + fields.tm_yday);
            firstOfDate_.try_emplace(dates_.back(), instant);
        }
        until_.assign(dates_.size(), first_ + 2 * minutesEachWay * 60);
        for (std::size_t i = dates_.size() - 1; i-- > 0;)
            until_[i] = dates_[i] == dates_[i + 1] ? until_[i + 1] : instantOf(i + 1);
    }

    std::time_t dayStart(std::time_t instant) const { return firstOfDate_.at(dates_[indexOf(instant)]); }
    std::time_t dayUntil(std::time_t instant) const { return until_[indexOf(instant)]; }
    std::time_t addingDays(std::time_t instant, int days) const {
        const std::time_t wanted = local_[indexOf(instant)] + days * 86400;
        return instantOf(static_cast<std::size_t>(std::ranges::lower_bound(latest_, wanted) - latest_.begin()));
    }

private:
    std::time_t first_;
    std::vector<std::time_t> local_;
    std::vector<std::time_t> latest_; ///< up to each minute, the latest time that the clock has shown
    std::vector<int> dates_;
    std::vector<std::time_t> until_;
    std::map<int, std::time_t> firstOfDate_;

    std::size_t indexOf(std::time_t instant) const { return static_cast<std::size_t>((instant - first_) / 60); }
    std::time_t instantOf(std::size_t index) const { return first_ + static_cast<std::time_t>(index) * 60; }
};

/// The instants from 2000 to 2037 at which the clock changes. In these years all changes fall on full minutes.
std::vector<std::time_t> clockChanges() {
    constexpr std::time_t begin = 946684800;
    constexpr std::time_t end = 2145916800;
    const auto offset = [](std::time_t instant) {
        std::tm fields{};
        ::localtime_r(&instant, &fields);
        return fields.tm_gmtoff;
    };
    std::vector<std::time_t> changes;
    for (std::time_t hour = begin; hour < end; hour += 3600) {
        if (offset(hour) == offset(hour + 3600))
            continue;
        std::time_t minute = hour;
        while (offset(minute) == offset(hour))
            minute += 60;
        changes.push_back(minute);
    }
    return changes;
}

class SystemCalendarInZone : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(SystemCalendarInZone, AgreesWithTheClockAroundEveryChange) {
    const TimeZone zone(GetParam());
    const SystemCalendar calendar;
    const std::vector<std::time_t> changes = clockChanges();
    ASSERT_FALSE(changes.empty()) << "the time zone database is missing";
    for (const std::time_t change : changes) {
        const MinuteWalk walk(change);
        std::vector<std::time_t> asked = {change - 60, change, walk.dayStart(change), walk.dayUntil(change) - 60,
                                          walk.dayUntil(change)};
        for (std::time_t minutes = -26 * 60; minutes <= 26 * 60; minutes += 17)
            asked.push_back(change + minutes * 60);
        for (const std::time_t instant : asked) {
            SCOPED_TRACE(utcText(at(instant)));
            for (const double within : {0.0, 59.75}) {
                const Calendar::Day day = calendar.day(at(instant) + Duration(within));
                ASSERT_EQ(utcText(day.start), utcText(at(walk.dayStart(instant))));
                ASSERT_EQ(utcText(day.until), utcText(at(walk.dayUntil(instant))));
            }
            for (const int days : {-1, 1}) {
                const auto later = calendar.addingDays(at(instant), days);
                ASSERT_TRUE(later);
                ASSERT_EQ(utcText(*later), utcText(at(walk.addingDays(instant, days)))) << days;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, SystemCalendarInZone,
                         testing::Values("Africa/Cairo", "Africa/Casablanca", "America/Asuncion", "America/Havana",
                                         "America/Sao_Paulo", "America/St_Johns", "Asia/Beirut", "Asia/Gaza",
                                         "Asia/Tehran", "Australia/Lord_Howe", "Europe/Berlin", "Pacific/Apia",
                                         "Pacific/Chatham"),
                         [](const auto& zone) {
                             std::string name = zone.param;
                             std::ranges::replace(name, '/', '_');
                             return name;
                         });

namespace {

class SystemBackend {
public:
    Calendar& calendar() { return calendar_; }

private:
    TimeZone zone_{"<+0530>-5:30"};
    SystemCalendar calendar_;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(System, CalendarContract, SystemBackend);
