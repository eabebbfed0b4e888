// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/Prefs.h"

#include "support/FakeCalendar.h"
#include "support/FakeMainLoop.h"
#include "support/FakeUserDefaults.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

struct PrefsTest : ::testing::Test {
    FakeClock clock;
    FakeMainLoop loop{clock};
    FakeUserDefaults store{loop};
    FakeCalendar calendar;

    static Date at(int hour, int minute, double second = 0) {
        return Date(Duration(20'000.0 * 86'400 + hour * 3600.0 + minute * 60.0 + second));
    }
    static Prefs quiet(std::int64_t start, std::int64_t end, bool enabled = true) {
        Prefs prefs;
        prefs.quietEnabled = enabled;
        prefs.quietStart = start;
        prefs.quietEnd = end;
        return prefs;
    }
};

Prefs documented() {
    Prefs prefs;
    prefs.limitEnabled = true;
    prefs.repeatReminder = true;
    prefs.lowEnabled = true;
    prefs.longEnabled = true;
    prefs.healthEnabled = true;
    prefs.quietEnabled = false;
    prefs.lowPowerEnabled = true;
    prefs.firmwareLimitEnabled = true;
    prefs.firmwareLimitSound = "default";
    prefs.lowPowerAt = 30;
    prefs.limit = 80;
    prefs.low = 20;
    prefs.longHours = 8;
    prefs.quietStart = 1320;
    prefs.quietEnd = 420;
    prefs.showPercent = true;
    prefs.showTime = false;
    for (const AlertKind kind : allAlertKinds)
        prefs.sounds[kind] = "default";
    return prefs;
}

TEST_F(PrefsTest, AFreshStoreYieldsTheFallbacks) {
    EXPECT_EQ(Prefs::current(store), documented());
}

TEST_F(PrefsTest, EachKeyFillsItsOwnField) {
    struct Row {
        const char* key;
        Value value;
        std::function<void(Prefs&)> change;
    };
    const Row rows[] = {
        {"limitEnabled", false, [](Prefs& prefs) { prefs.limitEnabled = false; }},
        {"limit", 61, [](Prefs& prefs) { prefs.limit = 61; }},
        {"repeatReminder", false, [](Prefs& prefs) { prefs.repeatReminder = false; }},
        {"limitSound", "Glass", [](Prefs& prefs) { prefs.sounds[AlertKind::chargeLimit] = "Glass"; }},
        {"lowEnabled", false, [](Prefs& prefs) { prefs.lowEnabled = false; }},
        {"low", 11, [](Prefs& prefs) { prefs.low = 11; }},
        {"lowSound", "Glass", [](Prefs& prefs) { prefs.sounds[AlertKind::low] = "Glass"; }},
        {"longEnabled", false, [](Prefs& prefs) { prefs.longEnabled = false; }},
        {"longHours", 3, [](Prefs& prefs) { prefs.longHours = 3; }},
        {"longSound", "none", [](Prefs& prefs) { prefs.sounds[AlertKind::tooLong] = "none"; }},
        {"lowPowerEnabled", false, [](Prefs& prefs) { prefs.lowPowerEnabled = false; }},
        {"lowPowerAt", 44, [](Prefs& prefs) { prefs.lowPowerAt = 44; }},
        {"lowPowerSound", "", [](Prefs& prefs) { prefs.sounds[AlertKind::lowPower] = ""; }},
        {"healthEnabled", false, [](Prefs& prefs) { prefs.healthEnabled = false; }},
        {"healthSound", "Glass", [](Prefs& prefs) { prefs.sounds[AlertKind::health] = "Glass"; }},
        {"firmwareLimitEnabled", false, [](Prefs& prefs) { prefs.firmwareLimitEnabled = false; }},
        {"firmwareLimitSound", "Glass", [](Prefs& prefs) { prefs.firmwareLimitSound = "Glass"; }},
        {"quietEnabled", true, [](Prefs& prefs) { prefs.quietEnabled = true; }},
        {"quietStart", 0, [](Prefs& prefs) { prefs.quietStart = 0; }},
        {"quietEnd", 1439, [](Prefs& prefs) { prefs.quietEnd = 1439; }},
        {"showPercent", false, [](Prefs& prefs) { prefs.showPercent = false; }},
        {"showTime", true, [](Prefs& prefs) { prefs.showTime = true; }},
    };
    EXPECT_EQ(std::size(rows), Prefs::defaults().size());
    for (const Row& row : rows) {
        FakeUserDefaults own(loop);
        own.setObject(row.key, row.value);
        Prefs expected = documented();
        row.change(expected);
        ASSERT_NE(expected, documented()) << row.key;
        EXPECT_EQ(Prefs::current(own), expected) << row.key;
    }
}

TEST_F(PrefsTest, AValueOfAnotherKindIsPassedOverForTheFallback) {
    for (const auto& [key, fallback] : Prefs::defaults()) {
        FakeUserDefaults own(loop);
        if (fallback.boolean())
            own.setObject(key, *fallback.boolean() ? 0 : 1);
        else if (fallback.integer())
            own.setObject(key, "7");
        else
            own.setObject(key, 7);
        EXPECT_EQ(Prefs::current(own), documented()) << key;
    }
}

TEST_F(PrefsTest, TakesValuesAsTheyAreStored) {
    for (const int value : {150, -5, 0}) {
        for (const char* key : {"limit", "low", "lowPowerAt", "longHours", "quietStart", "quietEnd"})
            store.setObject(key, value);
        const Prefs prefs = Prefs::current(store);
        EXPECT_EQ(prefs.limit, value);
        EXPECT_EQ(prefs.low, value);
        EXPECT_EQ(prefs.lowPowerAt, value);
        EXPECT_EQ(prefs.longHours, value);
        EXPECT_EQ(prefs.quietStart, value);
        EXPECT_EQ(prefs.quietEnd, value);
    }
}

TEST_F(PrefsTest, IsASnapshot) {
    const Prefs before = Prefs::current(store);
    store.setObject("limit", 60);
    EXPECT_EQ(before.limit, 80);
    EXPECT_EQ(Prefs::current(store).limit, 60);
}

TEST_F(PrefsTest, RegistersTheFallbacksEachTimeAndStoresNoneOfThem) {
    Prefs::current(store);
    Prefs::current(store);
    EXPECT_EQ(store.registrations, 2);
    EXPECT_TRUE(store.stored().empty());
}

TEST_F(PrefsTest, QuietHoursIncludeTheirStartAndExcludeTheirEnd) {
    struct Row {
        std::int64_t start;
        std::int64_t end;
        int hour;
        int minute;
        bool isQuiet;
    };
    const Row rows[] = {
        {1320, 420, 22, 0, true},  {1320, 420, 23, 59, true},  {1320, 420, 0, 0, true},   {1320, 420, 6, 59, true},
        {1320, 420, 7, 0, false},  {1320, 420, 21, 59, false}, {1320, 420, 12, 0, false}, {540, 1020, 9, 0, true},
        {540, 1020, 16, 59, true}, {540, 1020, 17, 0, false},  {540, 1020, 8, 59, false}, {540, 1020, 0, 0, false},
        {0, 1, 0, 0, true},        {0, 1, 0, 1, false},        {1439, 0, 23, 59, true},   {1439, 0, 0, 0, false},
        {-10, 2000, 12, 0, true},  {2000, 420, 6, 59, true},   {2000, 420, 7, 0, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(quiet(row.start, row.end).inQuietHours(at(row.hour, row.minute), calendar), row.isQuiet)
            << row.start << " to " << row.end << " at " << row.hour << ":" << row.minute;
    }
}

TEST_F(PrefsTest, QuietHoursIgnoreTheSeconds) {
    EXPECT_TRUE(quiet(1320, 420).inQuietHours(at(6, 59, 59.9), calendar));
    EXPECT_FALSE(quiet(1320, 420).inQuietHours(at(21, 59, 59.9), calendar));
}

TEST_F(PrefsTest, EqualStartAndEndAreNoQuietHoursAtAnyMinute) {
    for (const int start : {0, 420, 1320}) {
        for (int minute = 0; minute < 1440; ++minute)
            ASSERT_FALSE(quiet(start, start).inQuietHours(at(minute / 60, minute % 60), calendar)) << minute;
    }
}

TEST_F(PrefsTest, ThereAreNoQuietHoursWhileTheyAreSwitchedOff) {
    for (int hour = 0; hour < 24; ++hour)
        EXPECT_FALSE(quiet(1320, 420, false).inQuietHours(at(hour, 30), calendar));
}

TEST_F(PrefsTest, QuietHoursAreThoseOfTheUsersTimeZone) {
    calendar.minutesEastOfUtc = 330;
    EXPECT_TRUE(quiet(1320, 420).inQuietHours(at(16, 30), calendar));
    EXPECT_FALSE(quiet(1320, 420).inQuietHours(at(16, 29), calendar));
    calendar.minutesEastOfUtc = -300;
    EXPECT_FALSE(quiet(1320, 420).inQuietHours(at(12, 0), calendar));
    EXPECT_TRUE(quiet(1320, 420).inQuietHours(at(11, 59), calendar));
}

TEST_F(PrefsTest, AnInstantWithoutALocalTimeCountsAsMidnight) {
    calendar.knowsNoTime = true;
    EXPECT_TRUE(quiet(1320, 420).inQuietHours(at(12, 0), calendar));
    EXPECT_FALSE(quiet(540, 1020).inQuietHours(at(12, 0), calendar));
}

TEST_F(PrefsTest, ThereIsNoSnoozeAtFirst) {
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), std::nullopt);
}

TEST_F(PrefsTest, ASnoozeLastsUntilItsEnd) {
    const Date end = clock.now() + 1h;
    Prefs::setSnoozeUntil(store, end);
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), end);
    clock.setNow(end - 1s);
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), end);
    clock.setNow(end);
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), std::nullopt);
    clock.setNow(end + 1s);
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), std::nullopt);
}

TEST_F(PrefsTest, ASnoozeThatRanOutStaysStored) {
    const Date end = clock.now() + 1h;
    Prefs::setSnoozeUntil(store, end);
    clock.setNow(end + 1h);
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), std::nullopt);
    clock.setNow(end - 1h);
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), end);
}

TEST_F(PrefsTest, ASnoozeIsStoredAsSecondsSince1970) {
    Prefs::setSnoozeUntil(store, Date(Duration(1'731'000'000.25)));
    EXPECT_EQ(store.stored(), (Dictionary{{"snoozeUntil", 1'731'000'000.25}}));
}

TEST_F(PrefsTest, AClearedSnoozeIsStoredAsTheIntegerZero) {
    Prefs::setSnoozeUntil(store, clock.now() + 1h);
    Prefs::setSnoozeUntil(store, std::nullopt);
    EXPECT_EQ(store.stored(), (Dictionary{{"snoozeUntil", 0}}));
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), std::nullopt);
}

TEST_F(PrefsTest, ASnoozeOfAnotherKindIsNone) {
    store.setObject("snoozeUntil", "tomorrow");
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), std::nullopt);
    store.setObject("snoozeUntil", static_cast<std::int64_t>(clock.now().time_since_epoch().count()) + 60);
    EXPECT_EQ(Prefs::snoozeUntil(store, clock), clock.now() + 1min);
}

} // namespace
