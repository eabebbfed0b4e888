// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/RandomHistory.h"

#include "support/Dice.h"
#include "support/FakeClock.h"
#include "support/FakeFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <utility>

// GoogleTest prints values with these functions when two differ.
static void PrintTo(const Sample& sample, std::ostream* stream) {
    *stream << "{t " << std::to_string(sample.t) << ", p " << sample.p << (sample.c ? ", c" : "")
            << (sample.a ? ", a}" : "}");
}

static void PrintTo(const HistoryStore::DaySummary& day, std::ostream* stream) {
    *stream << "{day " << std::to_string(day.day.time_since_epoch().count()) << ", average " << day.avgPercent << ", "
            << day.minPercent << " to " << day.maxPercent << ", charging " << day.chargingMinutes << " min}";
}

namespace {

constexpr double days = 86400;
constexpr double leastStep = 0.125;

class Play {
public:
    Play(std::uint64_t seed, const Calendar& calendar, const PlainHistory::LocalClock& localClock,
         const std::vector<std::int64_t>& places)
        : dice_(seed)
        , now_(static_cast<double>(dice_.of(places)) + static_cast<double>(dice_.from(-3 * 86400, 3 * 86400)))
        , isCalm_(dice_.oneIn(2))
        , localClock_(localClock)
        , plain_(localClock)
        , store_(withFile(), clock_, calendar) {
        plain_.load(list_, Date(Duration(now_)));
        compareState();
    }

    void run() {
        const std::int64_t steps = dice_.from(1, 120);
        for (std::int64_t step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step) + ", now " + std::to_string(now_));
            passTime();
            act();
            compareState();
            compareAnswers();
        }
    }

private:
    Dice dice_;
    double now_;
    bool isCalm_; ///< mostly a reading each minute, so that there are long runs
    const PlainHistory::LocalClock& localClock_;
    FakeClock clock_{Date(Duration(now_))};
    FakeFiles files_;
    BatteryState state_;
    std::vector<Sample> list_; ///< the content of the file at the start
    PlainHistory plain_;
    HistoryStore store_;

    Date now() const { return Date(Duration(now_)); }

    /// That number, or the least step more or less.
    double about(double number) { return number + static_cast<double>(dice_.from(-1, 1)) * leastStep; }

    /// The limit of one of the rules, or one step below or above it.
    double gap() {
        static const std::vector gaps{1.0, 60.0, 300.0, 600.0, 900.0, 3600.0, days, 5 * days, 30 * days};
        return about(dice_.of(gaps));
    }

    /// At most one step above the limit for a gap; small ones are likelier.
    double smallGap() {
        static const std::vector gaps{60.0, 60.0, 60.0, 60.0, 60.0, 60.0, 300.0, 600.0, 900.0};
        return about(dice_.of(gaps));
    }

    Sample sample(double t) {
        return {t, dice_.oneIn(30) ? dice_.from(-250, 250) : dice_.from(0, 100), dice_.oneIn(2), !dice_.oneIn(3)};
    }

    /// Makes a file with samples in any order, several of them with the same time.
    FakeFiles& withFile() {
        if (dice_.oneIn(3))
            return files_;
        double t = now_ - static_cast<double>(dice_.from(0, 31 * 86400));
        for (std::uint64_t i = dice_.below(60); i > 0; --i) {
            list_.push_back(sample(t));
            t += dice_.oneIn(4) ? 0 : dice_.oneIn(isCalm_ ? 20 : 3) ? gap() : smallGap();
        }
        if (!list_.empty()) // one at the age limit
            list_.push_back(sample(about(now_ - 30 * days)));
        if (dice_.oneIn(2)) {
            for (std::size_t i = list_.size(); i > 1; --i)
                std::swap(list_[i - 1], list_[dice_.below(i)]);
        }
        PlainHistory writer(nullptr);
        std::ranges::for_each(list_, [&writer](const Sample& sample) { writer.samples.push_back(sample); });
        writer.save(now());
        plain_.file = writer.file;
        files_.files[files_.support / "Velmora/history.json"] = writer.file;
        return files_;
    }

    /// The next midnight, unless the local clock is changed before it.
    double nextMidnight() const {
        const auto local = static_cast<double>(localClock_(static_cast<std::int64_t>(std::floor(now_))));
        return std::floor(now_) + (std::floor(local / days) + 1) * days - local;
    }

    void passTime() {
        if (!plain_.samples.empty() && dice_.oneIn(25))
            now_ = about(dice_.of(plain_.samples).t + 30 * days);
        else if (dice_.oneIn(25))
            now_ = about(nextMidnight());
        else if (dice_.oneIn(isCalm_ ? 60 : 8))
            now_ += dice_.oneIn(3) ? -gap() : gap();
        else
            now_ += dice_.oneIn(10) ? 0 : smallGap();
    }

    void act() {
        if (dice_.oneIn(40)) {
            files_.refusesWrites = plain_.isDiskFull = !files_.refusesWrites;
        } else if (dice_.oneIn(40)) {
            store_.save(now());
            plain_.save(now());
        } else if (dice_.oneIn(100)) {
            store_.samples.clear();
            plain_.samples.clear();
        } else {
            state_.hasBattery = !dice_.oneIn(20);
            if (dice_.oneIn(2))
                state_.percent = dice_.oneIn(30) ? dice_.from(-250, 250) : dice_.from(0, 100);
            if (dice_.oneIn(isCalm_ ? 30 : 5))
                state_.isCharging = !state_.isCharging;
            if (dice_.oneIn(isCalm_ ? 30 : 5))
                state_.pluggedIn = !state_.pluggedIn;
            const bool force = dice_.oneIn(3);
            store_.record(state_, now(), force);
            plain_.record(state_, now(), force);
        }
    }

    void compareState() {
        ASSERT_EQ(std::vector(store_.samples.begin(), store_.samples.end()), plain_.samples);
        ASSERT_EQ(files_.replacedPaths.size(), plain_.timesSaved);
        ASSERT_EQ(files_.files[files_.support / "Velmora/history.json"], plain_.file);
    }

    void compareAnswers() {
        const Date asked(Duration(now_ + (dice_.oneIn(2) ? 0 : dice_.oneIn(3) ? -gap() : gap())));
        EXPECT_EQ(store_.pluggedSinceEstimate(asked), plain_.pluggedSince(asked));
        const double since = plain_.samples.empty() ? now_ : about(dice_.of(plain_.samples).t);
        EXPECT_TRUE(
            std::ranges::equal(store_.samplesSince(Date(Duration(since))), plain_.since(Date(Duration(since)))));
        EXPECT_EQ(store_.hasDailySummaries(7, asked), !store_.dailySummaries(7, asked).empty());
        if (dice_.oneIn(10)) {
            EXPECT_EQ(store_.csv(), plain_.csv());
        }
        if (dice_.oneIn(2))
            return;
        const std::int64_t dayCount = dice_.oneIn(10) ? dice_.from(-3, 40) : dice_.from(1, 8);
        EXPECT_EQ(store_.dailySummaries(dayCount, asked), plain_.dailySummaries(dayCount, asked)) << dayCount;
    }
};

} // namespace

void playRandomHistory(std::uint64_t seed, const Calendar& calendar, const PlainHistory::LocalClock& localClock,
                       const std::vector<std::int64_t>& places) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Play(seed, calendar, localClock, places).run();
}
