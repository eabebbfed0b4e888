// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryFile.h"
#include "shell/AppModel.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

/// Local midnight of the first day, Monday, 30 October 2023, in a time zone one hour east of UTC.
constexpr Date firstMidnight{std::chrono::seconds(1'698'624'000 - 3600)};

/// A time such as "09:38" on a day of the month; the first day is 1.
Date at(int day, const std::string& time) {
    const int minutes = std::stoi(time.substr(0, 2)) * 60 + std::stoi(time.substr(3, 2));
    return firstMidnight + Duration((day - 1) * 86400.0 + minutes * 60.0);
}

/// The day and the local time, as in "12 09:38:30".
std::string shown(Date date) {
    const auto seconds = static_cast<int>((date - firstMidnight).count());
    char text[32];
    std::snprintf(text, sizeof text, "%2d %02d:%02d:%02d", seconds / 86400 + 1, seconds / 3600 % 24, seconds / 60 % 60,
                  seconds % 60);
    return text;
}

struct Reminder {
    Date when;
    std::string kind;
    std::string text;
};

std::string shown(const Reminder& reminder) {
    return "day " + shown(reminder.when) + " " + reminder.kind + ": " + reminder.text;
}

/// A laptop, its user and the program, for a month. The battery makes for simple sums: plugged in it gains 1 % a
/// minute, awake on battery it loses 1 % every 5 minutes (every 8 in Low Power Mode), asleep on battery 1 % an hour.
/// The charge changes on the half minute; the user acts, and the program's timer fires, on the full one.
class SimulatedMonth : public ::testing::Test {
protected:
    static inline const std::filesystem::path historyFile = "/home/user/.local/share/Velmora/history.json";

    FakePlatform fake;
    std::optional<AppModel> model;
    std::vector<Reminder> reminders;
    int savesWithoutReason = 0; ///< neither on schedule nor for a change
    int timedSaves = 0;         ///< because five minutes had passed
    int transitions = 0;        ///< plugged in, unplugged, charging began or ended
    int sleeps = 0;
    int launchesAndQuits = 0;
    double awakeSeconds = 0;

    SimulatedMonth() {
        fake.clock.setNow(firstMidnight);
        fake.calendar.minutesEastOfUtc = 60;
        fake.defaults.setObject("quietEnabled", true); // 22:00 to 07:00, the defaults
        percent_ = 54;
        fullCapacity_ = 4060; // 81.2 %
        show();
    }

    void launch() {
        ++launchesAndQuits;
        model.emplace(fake.platform());
        did([&] { model->start(); }, true);
    }

    void quit() {
        ++launchesAndQuits;
        did([&] { model->history.save(fake.clock.now()); }, true);
        model.reset();
    }

    /// The machine runs until `end`, and then has that charge.
    void awakeUntil(Date end, int percent) {
        awakeUntil(end);
        ASSERT_EQ(percent_, percent) << "on day " << shown(fake.clock.now());
    }

    void awakeUntil(Date end) {
        while (fake.clock.now() < end) {
            const double elapsed = (fake.clock.now() - firstMidnight).count();
            const Duration step =
                std::min(Duration(std::floor(elapsed / 30 + 1) * 30 - elapsed), end - fake.clock.now());
            did([&] { fake.mainLoop.advance(step); });
            awakeSeconds += step.count();
            if (std::fmod((fake.clock.now() - firstMidnight).count(), 60) == 30)
                passHalfMinute();
        }
    }

    void plug() { setPlugged(true); }
    void unplug() { setPlugged(false); }

    void sleepUntil(Date end, int percent) {
        sleepUntil(end);
        ASSERT_EQ(percent_, percent) << "on day " << shown(fake.clock.now());
    }

    void sleepUntil(Date end) {
        ++sleeps;
        did([&] { fake.sessionEvents.prepareForSleep(); }, true);
        EXPECT_TRUE(decodeHistory(fake.files.files[historyFile]) == model->history.samples)
            << "not on the disk before the sleep on day " << shown(fake.clock.now());
        const Duration time = end - fake.clock.now();
        fake.clock.suspend(time);
        if (plugged_)
            percent_ = std::min(100, percent_ + static_cast<int>(time / 1min));
        else
            percent_ = std::max(2, percent_ - static_cast<int>(time / 1h)); // at 2 % the machine is off
        minutes_ = 0;
        show();
        did([&] { fake.sessionEvents.wake(); });
    }

    void switchLowPowerMode(bool on) {
        minutes_ = 0;
        did([&] { fake.powerSaving.switchLowPowerMode(on); });
    }

    void pressSnooze() {
        did([&] {
            fake.notificationCenter.press("SNOOZE");
            fake.mainLoop.runDue();
        });
    }

    /// The battery's controller finds a new capacity.
    void setFullCapacity(int capacity) {
        fullCapacity_ = capacity;
        show();
    }

private:
    int percent_ = 0;
    bool plugged_ = false;
    int minutes_ = 0; ///< since the last change of percent
    int fullCapacity_ = 0;
    Date lastSave_ = firstMidnight;

    bool charges() const { return plugged_ && percent_ < 100; }

    void show() {
        fake.powerSources.setBattery(percent_, plugged_, charges());
        fake.powerSources.registry = Value(Dictionary{{"DesignCapacity", 5000}, {"MaxCapacity", fullCapacity_}});
    }

    void passHalfMinute() {
        ++minutes_;
        const int before = percent_;
        if (plugged_)
            percent_ = std::min(100, percent_ + 1);
        else if (minutes_ == (fake.powerSaving.lowPowerMode ? 8 : 5))
            percent_ -= 1;
        if (percent_ == before)
            return;
        minutes_ = 0;
        reportChange();
    }

    void setPlugged(bool plugged) {
        plugged_ = plugged;
        minutes_ = 0;
        reportChange();
    }

    void reportChange() {
        show();
        did([&] { fake.powerSources.change(); });
    }

    /// Every event of the simulation runs in here, which counts the reminders and the writes to the disk.
    void did(const std::function<void()>& action, bool mayWrite = false) {
        const std::size_t reminded = fake.notificationCenter.requests.size();
        const std::size_t written = fake.files.replacedPaths.size();
        action();
        const Date now = fake.clock.now();
        for (std::size_t i = reminded; i < fake.notificationCenter.requests.size(); ++i)
            reminders.push_back(
                {now, fake.notificationCenter.requests[i].identifier, fake.notificationCenter.requests[i].body});
        const bool transition = model && endsWithTransition(model->history.samples, now);
        const auto writes = static_cast<int>(fake.files.replacedPaths.size() - written);
        transitions += transition;
        if (writes == 0)
            return;
        const bool inTime = now - lastSave_ > 5min;
        if (!mayWrite && !transition)
            (inTime ? timedSaves : savesWithoutReason) += 1;
        savesWithoutReason += writes - 1;
        lastSave_ = now;
    }

    static bool endsWithTransition(const SampleList& samples, Date now) {
        if (samples.size() < 2 || samples.back().date() != now)
            return false;
        const Sample& before = samples[samples.size() - 2];
        return samples.back().a != before.a || samples.back().c != before.c;
    }

protected:
    /// A day at the office; one reminder, at 9:38. Starts at 8:00 with 54 %, or so much `less`, like the day after.
    void office(int day, int less = 0) {
        awakeUntil(at(day, "09:00"), 42 - less);
        plug();
        awakeUntil(at(day, "09:40"), 82 - less);
        unplug();
        awakeUntil(at(day, "12:00"), 54 - less);
        sleepUntil(at(day, "13:00"), 53 - less);
        awakeUntil(at(day, "14:30"), 35 - less);
        chargeUntil(at(day, "15:10"), 75 - less);
        awakeUntil(at(day, "17:30"), 47 - less);
        sleepUntil(at(day, "19:00"), 46 - less);
        chargeUntil(at(day, "19:33"), 79 - less);
        awakeUntil(at(day, "20:45"), 65 - less);
    }

    /// Plugged in until `end`.
    void chargeUntil(Date end, int percent) {
        plug();
        awakeUntil(end, percent);
        unplug();
    }
};

TEST_F(SimulatedMonth, BringsTheRemindersThatTheUserShouldHaveAndNoOther) {
    fake.clock.suspend(8h);
    launch();
    office(1);
    sleepUntil(at(2, "08:00"));
    office(2);
    sleepUntil(at(3, "08:00"));

    // All day at a desk, with the charger in and the reminders ignored.
    awakeUntil(at(3, "08:30"), 48);
    chargeUntil(at(3, "16:40"), 100);
    awakeUntil(at(3, "17:30"), 90);
    sleepUntil(at(3, "19:00"), 89);
    awakeUntil(at(3, "21:00"), 65);
    sleepUntil(at(4, "08:00"));
    office(4);
    sleepUntil(at(5, "08:00"));

    // Plugged in at home from Friday to Monday, three days.
    awakeUntil(at(5, "08:30"), 48);
    plug();
    awakeUntil(at(5, "20:45"));
    for (const int day : {6, 7}) {
        sleepUntil(at(day, "09:00"));
        awakeUntil(at(day, "12:00"));
        sleepUntil(at(day, "18:00"));
        awakeUntil(at(day, "21:30"));
    }
    sleepUntil(at(8, "08:00"));
    awakeUntil(at(8, "08:30"));
    unplug();
    awakeUntil(at(8, "12:00"), 58);
    sleepUntil(at(8, "13:00"), 57);
    awakeUntil(at(8, "14:30"), 39);
    chargeUntil(at(8, "15:10"), 79);
    awakeUntil(at(8, "17:30"), 51);
    sleepUntil(at(8, "19:00"), 50);
    chargeUntil(at(8, "19:29"), 79);
    awakeUntil(at(8, "20:45"), 64);
    sleepUntil(at(9, "07:00"), 54);
    sleepUntil(at(9, "08:00"), 53); // the lid was opened and closed at seven
    setFullCapacity(4040);          // 80.8 %
    office(9, 1);
    sleepUntil(at(10, "08:00"));

    // The reminder comes in a meeting: snoozed.
    awakeUntil(at(10, "09:00"), 41);
    plug();
    awakeUntil(at(10, "09:40"));
    pressSnooze();
    awakeUntil(at(10, "10:46"), 100);
    unplug();
    awakeUntil(at(10, "12:00"), 86);
    sleepUntil(at(10, "13:00"), 85);
    awakeUntil(at(10, "17:30"), 31);
    sleepUntil(at(10, "19:00"), 30);
    chargeUntil(at(10, "19:49"), 79);
    awakeUntil(at(10, "21:00"), 65);
    sleepUntil(at(11, "06:00"), 56);

    // Up early, in the quiet hours; in the afternoon the battery runs down and Low Power Mode is switched on.
    awakeUntil(at(11, "06:05"), 55);
    chargeUntil(at(11, "07:03"), 100);
    awakeUntil(at(11, "11:00"), 53);
    chargeUntil(at(11, "11:26"), 79);
    awakeUntil(at(11, "12:00"), 73);
    sleepUntil(at(11, "13:00"), 72);
    awakeUntil(at(11, "16:36"), 29);
    switchLowPowerMode(true);
    EXPECT_EQ(fake.notificationCenter.removed.back(), "lowPower") << "the suggestion has been followed";
    awakeUntil(at(11, "17:30"), 23);
    sleepUntil(at(11, "19:00"), 22);
    awakeUntil(at(11, "19:20"), 20);
    plug();
    awakeUntil(at(11, "19:21"));
    switchLowPowerMode(false);
    awakeUntil(at(11, "20:19"), 79);
    unplug();
    awakeUntil(at(11, "21:35"), 64);
    sleepUntil(at(12, "08:00"), 54);
    setFullCapacity(4001); // 80.02 %
    office(12);
    sleepUntil(at(13, "10:00"), 52);

    // Saturday: the battery finds that its capacity has fallen.
    awakeUntil(at(13, "10:30"), 46);
    chargeUntil(at(13, "11:03"), 79);
    awakeUntil(at(13, "12:00"));
    setFullCapacity(3995); // 79.9 %
    awakeUntil(at(13, "12:30"), 62);
    sleepUntil(at(15, "08:00"), 19);
    awakeUntil(at(15, "08:10"), 17);
    chargeUntil(at(15, "09:15"), 82);
    awakeUntil(at(15, "12:00"), 49);
    setFullCapacity(3980); // 79.6 %
    sleepUntil(at(15, "13:00"), 48);
    awakeUntil(at(15, "14:30"), 30);
    chargeUntil(at(15, "15:10"), 70);
    awakeUntil(at(15, "17:30"), 42);
    sleepUntil(at(15, "19:00"), 41);
    chargeUntil(at(15, "19:38"), 79);
    awakeUntil(at(15, "20:50"), 65);
    sleepUntil(at(16, "08:00"));
    office(16);
    sleepUntil(at(17, "08:00"));
    office(17);
    sleepUntil(at(18, "08:00"));

    // No charger until late in the evening, and then the limit is reached in the quiet hours.
    awakeUntil(at(18, "09:00"), 42);
    chargeUntil(at(18, "09:40"), 82);
    awakeUntil(at(18, "12:00"), 54);
    sleepUntil(at(18, "13:00"), 53);
    awakeUntil(at(18, "14:30"), 35);
    chargeUntil(at(18, "15:10"), 75);
    awakeUntil(at(18, "17:30"), 47);
    sleepUntil(at(18, "19:00"), 46);
    awakeUntil(at(18, "21:15"), 19);
    plug();
    awakeUntil(at(18, "22:30"), 94);
    sleepUntil(at(19, "08:00"), 100);
    awakeUntil(at(19, "08:15"));
    unplug();
    awakeUntil(at(19, "12:00"), 55);
    sleepUntil(at(19, "13:00"), 54);
    awakeUntil(at(19, "14:30"), 36);
    chargeUntil(at(19, "15:10"), 76);
    awakeUntil(at(19, "17:30"), 48);
    sleepUntil(at(19, "19:00"), 47);
    chargeUntil(at(19, "19:32"), 79);
    awakeUntil(at(19, "20:45"), 65);
    sleepUntil(at(20, "08:00"));

    // Plugged in all Saturday; at noon the user logs out and in again.
    awakeUntil(at(20, "09:00"), 42);
    plug();
    awakeUntil(at(20, "12:00"), 100);
    quit();
    awakeUntil(at(20, "12:02"));
    launch();
    awakeUntil(at(20, "17:10"));
    unplug();
    awakeUntil(at(20, "17:30"), 96);
    sleepUntil(at(21, "10:00"), 80);

    // Forgotten on the sofa until it goes off by itself.
    awakeUntil(at(21, "16:25"), 3);
    sleepUntil(at(22, "08:00"), 2);
    awakeUntil(at(22, "08:01"));
    chargeUntil(at(22, "09:22"), 83);
    awakeUntil(at(22, "12:00"), 52);
    sleepUntil(at(22, "13:00"), 51);
    awakeUntil(at(22, "14:30"), 33);
    chargeUntil(at(22, "15:10"), 73);
    awakeUntil(at(22, "17:30"), 45);
    sleepUntil(at(22, "19:00"), 44);
    chargeUntil(at(22, "19:35"), 79);
    awakeUntil(at(22, "20:45"), 65);
    sleepUntil(at(23, "08:00"));
    office(23);
    sleepUntil(at(24, "08:00"));

    // The user tries a lower limit, and gives it up just after the reminders for it have ended.
    fake.defaults.setObject("limit", 60);
    awakeUntil(at(24, "09:00"), 42);
    plug();
    awakeUntil(at(24, "09:36"), 78);
    fake.defaults.setObject("limit", 80);
    awakeUntil(at(24, "09:40"), 82);
    unplug();
    awakeUntil(at(24, "12:00"), 54);
    sleepUntil(at(24, "19:00"), 47);
    chargeUntil(at(24, "19:32"), 79);
    awakeUntil(at(24, "20:45"), 65);
    sleepUntil(at(25, "08:00"));
    office(25);
    sleepUntil(at(26, "08:00"));
    office(26);

    // Away for the weekend; the machine sleeps on the charger.
    plug();
    awakeUntil(at(26, "20:46"), 66);
    sleepUntil(at(29, "08:00"), 100);
    awakeUntil(at(29, "08:30"));
    unplug();
    awakeUntil(at(29, "12:00"), 58);
    sleepUntil(at(29, "13:00"), 57);
    awakeUntil(at(29, "14:30"), 39);
    chargeUntil(at(29, "15:10"), 79);
    awakeUntil(at(29, "17:30"), 51);
    sleepUntil(at(29, "19:00"), 50);
    chargeUntil(at(29, "19:29"), 79);
    awakeUntil(at(29, "20:40"), 65);
    sleepUntil(at(30, "08:00"));
    for (const int day : {30, 31, 32, 33}) {
        office(day);
        if (day < 33)
            sleepUntil(at(day + 1, "08:00"));
    }

    const auto limit = [](int percent) {
        return "Battery is at " + std::to_string(percent) + "%. Unplug to keep it healthy.";
    };
    const auto low = [](int percent) { return "Battery is at " + std::to_string(percent) + "%. Plug in soon."; };
    const auto suggestion = [](int percent) {
        return "Battery is at " + std::to_string(percent) +
               "%. Turn on Low Power Mode (System Settings, Battery) to stretch it.";
    };
    const std::string tooLong = "Plugged in for over 8 h at 100%. Unplug it to let the battery rest.";
    const std::string health = "Battery health has fallen to 80% of its original capacity.";

    const std::vector<Reminder> due{
        // Office days: 42 % at nine, so 80 % 38 minutes later. Unplugged at 9:40, so no repeat; the afternoon's and the
        // evening's charging stop short of 80 %.
        {at(1, "09:38"), "chargeLimit", limit(80)},
        {at(2, "09:38"), "chargeLimit", limit(80)},
        // The desk: 48 % at 8:30. Not unplugged, so it is repeated every five minutes, three times.
        {at(3, "09:02"), "chargeLimit", limit(80)},
        {at(3, "09:07"), "chargeLimit", limit(85)},
        {at(3, "09:12"), "chargeLimit", limit(90)},
        {at(3, "09:17"), "chargeLimit", limit(95)},
        // More than eight hours since 8:30.
        {at(3, "16:31"), "tooLong", tooLong},
        {at(4, "09:38"), "chargeLimit", limit(80)}, // office
        // The long weekend begins like the day at the desk.
        {at(5, "09:02"), "chargeLimit", limit(80)},
        {at(5, "09:07"), "chargeLimit", limit(85)},
        {at(5, "09:12"), "chargeLimit", limit(90)},
        {at(5, "09:17"), "chargeLimit", limit(95)},
        {at(5, "16:31"), "tooLong", tooLong},
        // Saturday to Monday: nothing. All has been said, and a condition that holds on waking is not news.
        // Office, but from 53 %: one minute later, just before the charger is pulled.
        {at(9, "09:39"), "chargeLimit", limit(80)},
        // The meeting: 41 % at nine. Snoozed at 9:40 for an hour; then, still plugged in, the next two repeats, until
        // it
        // is unplugged at 10:46.
        {at(10, "09:39"), "chargeLimit", limit(80)},
        {at(10, "10:40"), "chargeLimit", limit(100)},
        {at(10, "10:45"), "chargeLimit", limit(100)},
        // Up early: 80 % at 6:30, in the quiet hours. Still so when they end; unplugged before the repeat.
        {at(11, "07:00"), "chargeLimit", limit(100)},
        // The afternoon: 72 % at one, so 29 %, the first below 30, after 43 times five minutes.
        {at(11, "16:35"), "lowPower", suggestion(29)},
        // In Low Power Mode from 29 %: 23 % at 17:30 and 22 % at 19:00, so 20 % two times eight minutes later.
        {at(11, "19:16"), "low", low(20)},
        {at(12, "09:38"), "chargeLimit", limit(80)}, // office
        // Below 80 %, seen at noon while the machine is awake. 79.9 % is shown as 80.
        {at(13, "12:00"), "health", health},
        // Monday at 8:00: nothing at 19 %, because that was so on waking. 17 % at 8:10, so 80 % 63 minutes later.
        {at(15, "09:13"), "chargeLimit", limit(80)},
        // The health goes on falling: nothing, the reminder for it has been sent.
        {at(16, "09:38"), "chargeLimit", limit(80)}, // office
        {at(17, "09:38"), "chargeLimit", limit(80)}, // office
        {at(18, "09:38"), "chargeLimit", limit(80)}, // office, until the evening
        // No charger: 46 % at seven, so 29 % after 17 and 20 % after 26 times five minutes.
        {at(18, "20:25"), "lowPower", suggestion(29)},
        {at(18, "21:10"), "low", low(20)},
        // 80 % at 22:16, in the quiet hours, and the machine sleeps before they end. In the morning it is not news.
        // Saturday: as at the desk, from 42 % at nine.
        {at(20, "09:38"), "chargeLimit", limit(80)},
        {at(20, "09:43"), "chargeLimit", limit(85)},
        {at(20, "09:48"), "chargeLimit", limit(90)},
        {at(20, "09:53"), "chargeLimit", limit(95)},
        // The program was started at 12:02 and knows from the history that the charger has been in since 9:00.
        {at(20, "17:01"), "tooLong", tooLong},
        // Forgotten: 80 % at ten, so 29 % after 51 and 20 % after 60 times five minutes. Then nobody reads them.
        {at(21, "14:15"), "lowPower", suggestion(29)},
        {at(21, "15:00"), "low", low(20)},
        // Found flat: 2 % on waking is not news. Charged from 8:01, so 80 % 78 minutes later.
        {at(22, "09:19"), "chargeLimit", limit(80)},
        {at(23, "09:38"), "chargeLimit", limit(80)}, // office
        // The limit at 60 %: 18 minutes after 42 %, and the three repeats.
        {at(24, "09:18"), "chargeLimit", limit(60)},
        {at(24, "09:23"), "chargeLimit", limit(65)},
        {at(24, "09:28"), "chargeLimit", limit(70)},
        {at(24, "09:33"), "chargeLimit", limit(75)},
        // Back to a limit of 80 %, set at 78 %: no longer reached, and then reached anew.
        {at(24, "09:38"), "chargeLimit", limit(80)},
        {at(25, "09:38"), "chargeLimit", limit(80)}, // office
        {at(26, "09:38"), "chargeLimit", limit(80)}, // office
        // The weekend on the charger was slept through: nothing on Monday.
        {at(30, "09:38"), "chargeLimit", limit(80)}, // office
        {at(31, "09:38"), "chargeLimit", limit(80)}, // office
        {at(32, "09:38"), "chargeLimit", limit(80)}, // office
        {at(33, "09:38"), "chargeLimit", limit(80)}, // office
    };
    for (std::size_t i = 0; i < std::max(due.size(), reminders.size()); ++i) {
        ASSERT_LT(i, reminders.size()) << "missing: " << shown(due[i]);
        ASSERT_LT(i, due.size()) << "too much: " << shown(reminders[i]);
        const std::string both = "due " + shown(due[i]) + "\ncame " + shown(reminders[i]);
        ASSERT_EQ(reminders[i].kind, due[i].kind) << both;
        ASSERT_EQ(reminders[i].text, due[i].text) << both;
        ASSERT_LE(std::abs((reminders[i].when - due[i].when).count()), 60) << both;
    }

    // The last 30 days are kept, to the minute, and no more.
    const auto& samples = model->history.samples;
    EXPECT_EQ(samples.back().date(), at(33, "20:45"));
    EXPECT_GE(samples.front().date(), at(3, "20:45"));
    EXPECT_LE(samples.front().date(), at(3, "20:46"));
    EXPECT_TRUE(std::is_sorted(samples.begin(), samples.end(),
                               [](const Sample& one, const Sample& other) { return one.t < other.t; }));

    // The machine slept through the weekend, which has no rows. Monday began with 100 %.
    const auto days = model->history.dailySummaries(7, fake.clock.now());
    ASSERT_EQ(days.size(), 5U);
    for (std::size_t i = 0; i < days.size(); ++i)
        EXPECT_EQ(days[i].day, at(33 - static_cast<int>(i), "00:00"));
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(days[i].minPercent, 35);
        EXPECT_EQ(days[i].maxPercent, 82);
        EXPECT_EQ(days[i].chargingMinutes, 40 + 40 + 33);
        // The mean charge between turning points, weighted by the time between them, is 59.9.
        EXPECT_NEAR(static_cast<double>(days[i].avgPercent), 60, 1);
    }
    EXPECT_EQ(days[4].minPercent, 39);
    EXPECT_EQ(days[4].maxPercent, 100);
    EXPECT_EQ(days[4].chargingMinutes, 40 + 29);
    EXPECT_GT(days[4].avgPercent, 50);
    EXPECT_LT(days[4].avgPercent, 85);

    // Changes, and samples that a sleep could lose, are written at once, the rest every five minutes.
    EXPECT_EQ(savesWithoutReason, 0);
    EXPECT_LE(timedSaves, static_cast<int>(awakeSeconds / 300) + sleeps);
    EXPECT_LE(static_cast<int>(fake.files.replacedPaths.size()), timedSaves + transitions + sleeps + launchesAndQuits);
    const auto onDisk = decodeHistory(fake.files.files[historyFile]);
    ASSERT_TRUE(onDisk && !onDisk->empty());
    EXPECT_GE(onDisk->back().date(), fake.clock.now() - 6min);

    EXPECT_EQ(model->pluggedSince.get(), std::nullopt);
    EXPECT_EQ(model->snoozeUntil.get(), std::nullopt);
}

} // namespace
