// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/NaiveAlertEngine.h"
#include "shell/AppModel.h"
#include "support/Dice.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace std::chrono_literals;
using Reason = AppModel::Reason;
using Request = NotificationCenter::Request;

namespace {

double seconds(Date date) {
    return date.time_since_epoch().count();
}

/// The preferences as they read where the store holds these values. A value of another kind than its key's is none.
Prefs naivePrefs(const Dictionary& stored) {
    const auto flag = [&](const char* key, bool fallback) {
        const auto found = stored.find(key);
        return found == stored.end() ? fallback : found->second.boolean().value_or(fallback);
    };
    const auto number = [&](const char* key, std::int64_t fallback) {
        const auto found = stored.find(key);
        return found == stored.end() ? fallback : found->second.integer().value_or(fallback);
    };
    const auto sound = [&](const char* key) {
        const auto found = stored.find(key);
        return found == stored.end() || !found->second.text() ? std::string("default") : *found->second.text();
    };
    Prefs prefs;
    prefs.limitEnabled = flag("limitEnabled", true);
    prefs.limit = number("limit", 80);
    prefs.repeatReminder = flag("repeatReminder", true);
    prefs.lowEnabled = flag("lowEnabled", true);
    prefs.low = number("low", 20);
    prefs.longEnabled = flag("longEnabled", true);
    prefs.longHours = number("longHours", 8);
    prefs.lowPowerEnabled = flag("lowPowerEnabled", true);
    prefs.lowPowerAt = number("lowPowerAt", 30);
    prefs.healthEnabled = flag("healthEnabled", true);
    prefs.quietEnabled = flag("quietEnabled", false);
    prefs.quietStart = number("quietStart", 1320);
    prefs.quietEnd = number("quietEnd", 420);
    prefs.showPercent = flag("showPercent", true);
    prefs.showTime = flag("showTime", false);
    prefs.sounds = {{AlertKind::chargeLimit, sound("limitSound")},
                    {AlertKind::low, sound("lowSound")},
                    {AlertKind::tooLong, sound("longSound")},
                    {AlertKind::lowPower, sound("lowPowerSound")},
                    {AlertKind::health, sound("healthSound")}};
    return prefs;
}

/// What the model does with a reading, told plainly. The history is asked since when the machine is plugged in; all the
/// rest is here.
struct NaiveModel {
    // What the world holds.
    Dictionary stored; ///< the preferences store
    std::deque<Sample> samples;
    std::vector<Request> requests;
    std::vector<std::string> removed; ///< the reminders that were taken off the screen
    bool available = true;            ///< runs as a bundle
    int minutesEastOfUtc = 0;
    // What is published.
    BatteryState state;
    std::optional<Date> pluggedSince;
    std::int64_t historyVersion = 0;
    std::optional<Date> snoozeUntil;

    NaiveAlertEngine engine;

    std::optional<Date> storedSnooze(Date now) const {
        const auto found = stored.find("snoozeUntil");
        const double end = found == stored.end() ? 0 : found->second.number().value_or(0);
        return seconds(now) < end ? std::optional(Date(Duration(end))) : std::nullopt;
    }

    bool isQuiet(const Prefs& prefs, Date now) const {
        const auto minutes = static_cast<std::int64_t>(std::floor(seconds(now) / 60)) + minutesEastOfUtc;
        const std::int64_t minute = (minutes % 1440 + 1440) % 1440;
        const bool started = minute >= prefs.quietStart;
        const bool ended = minute >= prefs.quietEnd;
        if (!prefs.quietEnabled || prefs.quietStart == prefs.quietEnd)
            return false;
        return prefs.quietStart < prefs.quietEnd ? started && !ended : started || !ended;
    }

    void record(const BatteryState& reading, Date now, bool force) {
        if (!reading.hasBattery)
            return;
        const Sample sample{.t = seconds(now), .p = reading.percent, .c = reading.isCharging, .a = reading.pluggedIn};
        if (!samples.empty() && !force) {
            Sample sameAsLast = samples.back();
            sameAsLast.t = sample.t;
            if (sameAsLast == sample)
                return;
        }
        samples.push_back(sample);
        while (samples.front().t < sample.t - 2'592'000)
            samples.pop_front();
    }

    void refresh(Reason reason, const BatteryState& reading, Date now, std::optional<Date> pluggedSinceEstimate) {
        const bool isFirst = reason == Reason::launch || reason == Reason::wake;
        const bool wasPluggedIn = pluggedSince.has_value();
        if (reading.lowPowerMode && !state.lowPowerMode)
            withdraw({"lowPower"});
        if (!reading.hasBattery || !reading.pluggedIn)
            pluggedSince.reset();
        else if (!pluggedSince)
            pluggedSince = isFirst && pluggedSinceEstimate ? *pluggedSinceEstimate : now;
        if (pluggedSince && !wasPluggedIn)
            withdraw({"low", "lowPower"});
        if (!pluggedSince && wasPluggedIn)
            withdraw({"chargeLimit", "tooLong"});
        state = reading;
        record(reading, now, reason != Reason::event);
        historyVersion += 1;
        const Prefs prefs = naivePrefs(stored);

        const auto mark = stored.find("healthAlertSent");
        engine.healthAlertSent = mark != stored.end() && mark->second.boolean() == true;
        const bool markBefore = engine.healthAlertSent;
        if (isFirst) {
            engine.run(reading, pluggedSince, now, prefs, false, true);
        } else {
            const bool snoozed = storedSnooze(now).has_value();
            if (!snoozed)
                snoozeUntil.reset();
            for (const PendingAlert& alert :
                 engine.run(reading, pluggedSince, now, prefs, !snoozed && !isQuiet(prefs, now), false))
                deliver(alert, prefs.sounds.at(alert.kind));
        }
        if (engine.healthAlertSent != markBefore)
            stored.insert_or_assign("healthAlertSent", engine.healthAlertSent);
    }

    void deliver(const PendingAlert& alert, const std::string& sound) {
        if (available)
            requests.push_back({.identifier = std::string(rawValue(alert.kind)),
                                .title = alert.title,
                                .body = alert.body,
                                .categoryIdentifier = "VL_ALERT",
                                .sound = sound == "none" ? std::nullopt : std::optional(sound)});
    }

    void withdraw(const std::vector<std::string>& kinds) {
        if (available)
            removed.insert(removed.end(), kinds.begin(), kinds.end());
    }

    void snooze(Date now) {
        stored.insert_or_assign("snoozeUntil", seconds(now + 1h));
        snoozeUntil = Date(Duration(seconds(now + 1h)));
    }

    void cancelSnooze() {
        stored.insert_or_assign("snoozeUntil", 0);
        snoozeUntil.reset();
    }

    void resetHistory() {
        samples.clear();
        historyVersion += 1;
    }
};

/// How often the interesting things happened, so that nobody believes a test in which nothing happens.
struct Happened {
    std::map<std::string, int> delivered;
    int severalAtOnce = 0;
    int heldBackBySnooze = 0;
    int heldBackByQuietHours = 0;
    int ranOutSnoozes = 0;
    int notRecorded = 0;
};

/// Lives with a running program and knows at every moment what it should have done.
class Life {
public:
    Life(std::uint64_t seed, Happened& happened) : seed_(seed), dice_(seed), happened_(happened) {
        fake_.calendar.minutesEastOfUtc = naive_.minutesEastOfUtc = dice_.of<int>({0, 60, -300, 345});
        if (dice_.chance(5)) {
            fake_.bundle.place = "/usr/bin";
            naive_.available = false;
        }
        fake_.clock.setNow(Date(1'700'000'000s + std::chrono::seconds(dice_.below(86400))));
        fake_.powerSources.whileReading = [this] { readAt_.push_back(fake_.clock.now()); };
        reading_.hasBattery = true;
        reading_.percent = 50;
        showBattery();
        launch();
    }

    /// False at the first difference.
    bool live(int steps) {
        for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step)
            act();
        return !::testing::Test::HasFailure();
    }

private:
    std::uint64_t seed_;
    Dice dice_;
    Happened& happened_;
    std::string story_;

    FakePlatform fake_;
    std::vector<Date> readAt_;
    std::unique_ptr<AppModel> model_;

    NaiveModel naive_;
    BatteryState reading_;
    // The seconds, of those in which the machine is awake, at which refreshes come by themselves.
    std::int64_t awake_ = 0;
    std::int64_t nextTick_ = 0;
    std::multimap<std::int64_t, Reason> wakes_;

    void note(const std::string& what) {
        std::ostringstream out;
        out << std::fixed << "  " << seconds(fake_.clock.now()) << " " << what << "\n";
        story_ += out.str();
    }

    void launch() {
        note("launch");
        model_ = std::make_unique<AppModel>(fake_.platform());
        naive_.samples = model_->history.samples; // what a file brings back has tests of its own
        naive_.state = {};
        naive_.pluggedSince.reset();
        naive_.historyVersion = 0;
        naive_.snoozeUntil = naive_.storedSnooze(fake_.clock.now());
        naive_.engine = {};
        wakes_.clear();
        compare();
        nextTick_ = awake_ + 60;
        refreshes({Reason::launch}, [this] { model_->start(); });
    }

    /// Does something that makes the model refresh, for these reasons one after the other.
    template <class Action>
    void refreshes(const std::vector<Reason>& reasons, Action action) {
        readAt_.clear();
        // The history as it is before: a refresh that comes after another of the same action finds more in it, but
        // then it is known already since when the machine is plugged in.
        HistoryStore& history = model_->history;
        std::map<double, std::optional<Date>> estimates;
        const bool known = naive_.pluggedSince.has_value();
        const auto whileReading = fake_.powerSources.whileReading;
        fake_.powerSources.whileReading = [&] {
            readAt_.push_back(fake_.clock.now());
            estimates[seconds(fake_.clock.now())] = known ? std::nullopt : history.pluggedSinceEstimate(readAt_.back());
        };
        action();
        fake_.powerSources.whileReading = whileReading;
        ASSERT_EQ(readAt_.size(), reasons.size()) << "refreshes; " << told();
        for (std::size_t i = 0; i < reasons.size(); ++i) {
            const std::size_t before = naive_.requests.size();
            const std::size_t samplesBefore = naive_.samples.size();
            const Prefs prefs = naivePrefs(naive_.stored);
            const bool hadSnooze = naive_.snoozeUntil.has_value();
            naive_.refresh(reasons[i], reading_, readAt_[i], estimates[seconds(readAt_[i])]);
            for (std::size_t request = before; request < naive_.requests.size(); ++request)
                ++happened_.delivered[naive_.requests[request].identifier];
            happened_.severalAtOnce += naive_.requests.size() > before + 1;
            happened_.notRecorded += reading_.hasBattery && naive_.samples.size() == samplesBefore;
            if (reasons[i] == Reason::event || reasons[i] == Reason::timer) {
                happened_.heldBackBySnooze += naive_.storedSnooze(readAt_[i]).has_value();
                happened_.heldBackByQuietHours += naive_.isQuiet(prefs, readAt_[i]);
                happened_.ranOutSnoozes += hadSnooze && !naive_.snoozeUntil;
            }
        }
        compare();
    }

    void compare() {
        const AppModel& model = *model_;
        EXPECT_EQ(model.state.get(), naive_.state) << told();
        EXPECT_EQ(model.pluggedSince.get(), naive_.pluggedSince) << told();
        EXPECT_EQ(model.historyVersion.get(), naive_.historyVersion) << told();
        EXPECT_EQ(model.snoozeUntil.get(), naive_.snoozeUntil) << told();
        EXPECT_EQ(model.history.samples, naive_.samples) << told();
        EXPECT_EQ(fake_.defaults.stored(), naive_.stored) << told();
        EXPECT_EQ(fake_.notificationCenter.removed, naive_.removed) << told();
        const auto& requests = fake_.notificationCenter.requests;
        EXPECT_TRUE(requests == naive_.requests) << "asked for:\n"
                                                 << shown(requests) << "expected:\n"
                                                 << shown(naive_.requests) << told();
    }

    static std::string shown(const std::vector<Request>& requests) {
        std::string text;
        for (const Request& request : requests)
            text += request.identifier + ": " + request.title + ": " + request.body + " [" +
                    request.categoryIdentifier + ", " + request.sound.value_or("(silent)") + "]\n";
        return text;
    }

    std::string told() const { return "seed " + std::to_string(seed_) + ":\n" + story_; }

    void showBattery() {
        fake_.powerSaving.lowPowerMode = reading_.lowPowerMode;
        fake_.powerSources.registry.reset();
        if (!reading_.hasBattery) {
            fake_.powerSources.sources.reset();
            return;
        }
        fake_.powerSources.setBattery(static_cast<int>(reading_.percent), reading_.pluggedIn, reading_.isCharging);
        Dictionary registry;
        if (reading_.designCapacity)
            registry.insert_or_assign("DesignCapacity", *reading_.designCapacity);
        if (reading_.fullCapacity)
            registry.insert_or_assign("MaxCapacity", *reading_.fullCapacity);
        fake_.powerSources.registry = Value(registry);
    }

    void act() {
        if (dice_.chance(45))
            return wait();
        if (dice_.chance(40))
            return use();
        switch (dice_.below(13)) {
        case 0:
        case 1:
        case 2:
        case 3:
            return setPreference();
        case 4:
        case 5:
            return snooze();
        case 6:
            note("cancels the snooze");
            model_->cancelSnooze();
            naive_.cancelSnooze();
            return compare();
        case 7:
            return storeSnooze();
        case 8:
        case 9:
            return sleep();
        case 10: {
            const auto jump = dice_.of<Duration>({-1s, -290s, -1h, 290s, 1h, 8h, 24h, -24h, 30 * 24h});
            note("the clock is set by " + std::to_string(jump.count()));
            fake_.clock.setNow(fake_.clock.now() + jump);
            return;
        }
        case 11:
            if (dice_.chance(20)) {
                note("resets the history");
                model_->resetHistory();
                naive_.resetHistory();
                return compare();
            }
            [[fallthrough]];
        case 12:
            if (dice_.chance(30)) {
                model_.reset();
                launch();
            }
        }
    }

    /// Lets the machine run.
    void wait() {
        const auto time = dice_.of<int>({1, 10, 60, 60, 60, 290, 300, 600, 3600});
        note("waits " + std::to_string(time) + " s");
        std::multimap<std::int64_t, Reason> due;
        const std::int64_t end = awake_ + time;
        for (; nextTick_ <= end; nextTick_ += 60)
            due.emplace(nextTick_, Reason::timer);
        while (!wakes_.empty() && wakes_.begin()->first <= end)
            due.insert(wakes_.extract(wakes_.begin()));
        awake_ = end;
        std::vector<Reason> reasons;
        for (const auto& [when, reason] : due)
            reasons.push_back(reason);
        refreshes(reasons, [&] { fake_.mainLoop.advance(std::chrono::seconds(time)); });
    }

    /// Something happens to the battery, and the system says so.
    void use() {
        const Prefs prefs = naivePrefs(naive_.stored);
        if (dice_.chance(30)) {
            reading_.pluggedIn = !reading_.pluggedIn;
            reading_.isCharging = reading_.pluggedIn && dice_.coin();
        }
        if (dice_.chance(50)) {
            const auto threshold = dice_.of<std::int64_t>({prefs.limit, prefs.low, prefs.lowPowerAt, 85, 15, 28});
            reading_.percent = std::clamp<std::int64_t>(threshold + dice_.of<std::int64_t>({-1, 0, 1}), 0, 100);
        }
        if (dice_.chance(3))
            reading_.hasBattery = false;
        else
            reading_.hasBattery = true;
        if (dice_.chance(15)) {
            reading_.designCapacity = 5000;
            reading_.fullCapacity = dice_.of<std::int64_t>({3975, 3999, 4000, 4050, 4099, 4100, 4500});
        } else if (dice_.chance(5)) {
            reading_.designCapacity.reset();
            reading_.fullCapacity.reset();
        }
        const bool mode = dice_.chance(5) ? !reading_.lowPowerMode : reading_.lowPowerMode;
        const bool modeChanges = mode != reading_.lowPowerMode;
        reading_.lowPowerMode = mode;
        if (!reading_.hasBattery) {
            reading_ = {};
            reading_.lowPowerMode = mode;
        }
        showBattery();
        note(std::string(reading_.hasBattery ? "battery " : "no battery ") + std::to_string(reading_.percent) + "% " +
             (reading_.pluggedIn ? "plugged " : "") + (reading_.isCharging ? "charging " : "") +
             (mode ? "low power mode " : "") + std::to_string(reading_.fullCapacity.value_or(-1)) + " of " +
             std::to_string(reading_.designCapacity.value_or(-1)));
        if (modeChanges)
            refreshes({Reason::event}, [&] { fake_.powerSaving.switchLowPowerMode(mode); });
        else if (dice_.chance(80))
            refreshes({Reason::event}, [&] { fake_.powerSources.change(); });
        else
            refreshes({Reason::event}, [&] { model_->refresh(Reason::event); }); // the popover is opened
    }

    void setPreference() {
        const auto flag = [&](const char* key) { return std::pair<std::string, Value>(key, dice_.chance(70)); };
        const auto one = [&](const char* key, const std::vector<Value>& values) {
            return std::pair<std::string, Value>(key, dice_.of(values));
        };
        const auto [key, value] = [&]() -> std::pair<std::string, Value> {
            switch (dice_.below(18)) {
            case 0:
                return flag("limitEnabled");
            case 1:
                return flag("repeatReminder");
            case 2:
                return flag("lowEnabled");
            case 3:
                return flag("longEnabled");
            case 4:
                return flag("lowPowerEnabled");
            case 5:
                return flag("healthEnabled");
            case 6:
            case 7:
                return one("quietEnabled", {true, false, "on"});
            case 8:
                return one("quietStart", {1320, 540, 420, 0, -10, 5000, "late"});
            case 9:
                return one("quietEnd", {420, 1020, 540, 1439, -10, 5000});
            case 10:
                return one("limit", {80, 80, 50, 100, 0, 150, -5, "full"});
            case 11:
                return one("low", {20, 20, 50, 0, 150, -5, true});
            case 12:
                return one("lowPowerAt", {30, 30, 20, 0, 150, -5});
            case 13:
                return one("longHours", {8, 1, 0, -2});
            case 14:
                return one("limitSound", {"default", "none", "Glass", 7});
            case 15:
                return one("lowSound", {"default", "none", "Glass"});
            case 16:
                return one("longSound", {"none", "Glass"});
            default:
                return one("healthAlertSent", {true, false, "yes"});
            }
        }();
        note("sets " + key + " to value number " + std::to_string(value.content.index()) + ": " +
             (value.text() ? *value.text() : std::to_string(value.number().value_or(value.boolean() == true))));
        fake_.defaults.setObject(key, value);
        naive_.stored.insert_or_assign(key, value);
        compare(); // no refresh: it holds from the next one on
    }

    void snooze() {
        note("snoozes");
        if (dice_.coin() && naive_.available) {
            fake_.notificationCenter.press("SNOOZE");
            fake_.mainLoop.runDue();
        } else {
            model_->snooze();
        }
        naive_.snooze(fake_.clock.now());
        compare();
    }

    /// Another program writes the end of a snooze.
    void storeSnooze() {
        const double now = seconds(fake_.clock.now());
        const auto value = dice_.of<Value>({now - 1, now, now + 1, now + 60, now + 600, "tomorrow", true, -1.0, 0});
        note("stores the end of a snooze: " + std::to_string(value.number().value_or(0) - now) + " s from now");
        fake_.defaults.setObject("snoozeUntil", value);
        naive_.stored.insert_or_assign("snoozeUntil", value);
        compare();
    }

    void sleep() {
        const auto time = dice_.of<Duration>({5s, 10min, 1h, 8h});
        note("sleeps for " + std::to_string(time.count()) + " s");
        refreshes({}, [&] {
            fake_.sessionEvents.prepareForSleep();
            fake_.clock.suspend(time);
        });
        if (dice_.coin())
            reading_.percent = static_cast<std::int64_t>(dice_.below(101));
        if (reading_.hasBattery)
            showBattery();
        else
            reading_.percent = 0;
        refreshes({}, [&] { fake_.sessionEvents.wake(); });
        wakes_.emplace(awake_ + 3, Reason::wake);
    }
};

TEST(RefreshModel, DoesWhatTheRulesToldPlainlySayWhateverHappens) {
    Happened happened;
    for (std::uint64_t seed = 1; seed <= 600; ++seed) {
        if (!Life(seed, happened).live(100))
            return; // one difference shows enough
    }
    for (const AlertKind kind : allAlertKinds)
        EXPECT_GT(happened.delivered[std::string(rawValue(kind))], 100) << rawValue(kind);
    EXPECT_GT(happened.severalAtOnce, 100);
    EXPECT_GT(happened.heldBackBySnooze, 100);
    EXPECT_GT(happened.heldBackByQuietHours, 100);
    EXPECT_GT(happened.ranOutSnoozes, 100);
    EXPECT_GT(happened.notRecorded, 100);
}

} // namespace
