// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/LimitWatch.h"

#include "support/Dice.h"
#include "support/PlainLimits.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using Kind = LimitAlertKind;
using Bodies = std::vector<std::string>;

namespace {

/// A battery whose firmware charges up to `limit` percent; without a limit if that is empty.
PackLimit pack(std::int64_t percent, std::optional<std::int64_t> limit, bool isCharging = true) {
    return {.device = "BAT0",
            .model = "5B10V98091",
            .design = 80400,
            .percent = percent,
            .isCharging = isCharging,
            .tellsLimit = limit.has_value(),
            .limit = limit};
}

/// Its file holds something that is no percentage.
PackLimit nonsense(std::int64_t percent) {
    PackLimit one = pack(percent, std::nullopt);
    one.tellsLimit = true;
    return one;
}

PackLimit second(PackLimit one, const char* model = "45N1743") {
    one.device = "BAT1";
    one.model = model;
    return one;
}

const std::string notHolding80 = "The firmware's limit is 80%, but the battery is at 84% and still charging.";
const std::string reset80 = "The firmware's limit was 80% and is now 100%.";

struct LimitWatchTest : ::testing::Test {
    LimitWatch watch;
    Duration uptime = 1h;
    std::vector<Kind> over; ///< at the latest look

    /// A look at the batteries a minute after the one before; what is told.
    Bodies look(const std::vector<PackLimit>& packs, bool pluggedIn = true, bool canDeliver = true,
                bool prime = false) {
        uptime += 60s;
        const LimitWatch::Outcome outcome = watch.run(packs, pluggedIn, uptime, canDeliver, prime);
        over = outcome.over;
        Bodies bodies;
        for (const LimitAlert& alert : outcome.due) {
            EXPECT_EQ(alert.title, alert.kind == Kind::reset ? "Charge limit was reset" : "Charge limit not holding");
            bodies.push_back(alert.body);
        }
        return bodies;
    }
    Bodies look(const PackLimit& one) { return look(std::vector{one}); }
    Bodies prime(const std::vector<PackLimit>& packs) { return look(packs, true, false, true); }
    Bodies prime(const PackLimit& one) { return prime(std::vector{one}); }

    /// Looks for so many minutes; all that is told.
    Bodies looks(int minutes, const std::vector<PackLimit>& packs, bool pluggedIn = true, bool canDeliver = true) {
        Bodies all;
        for (int i = 0; i < minutes; ++i) {
            for (const std::string& body : look(packs, pluggedIn, canDeliver))
                all.push_back(body);
        }
        return all;
    }
    Bodies looks(int minutes, const PackLimit& one) { return looks(minutes, std::vector{one}); }

    /// The program is started again, with what it has kept.
    void restart() {
        LimitWatch fresh;
        fresh.memory = LimitMemory::decode(watch.memory.encoded());
        watch = fresh;
    }
};

TEST(LimitAlertKind, HasANameForTheNotification) {
    EXPECT_EQ(rawValue(Kind::notHolding), "limitNotHolding");
    EXPECT_EQ(rawValue(Kind::reset), "limitReset");
}

TEST_F(LimitWatchTest, TellsOfACharge3PointsBeyondTheLimitAfterTenMinutes) {
    prime(pack(80, 80));
    EXPECT_EQ(looks(10, pack(84, 80)), Bodies{});
    EXPECT_EQ(look(pack(84, 80)), Bodies{notHolding80});
    EXPECT_EQ(looks(600, pack(100, 80)), Bodies{}) << "once";
}

TEST_F(LimitWatchTest, TellsOfItOnceUntilTheChargeWasWithinTheLimitAgain) {
    prime(pack(70, 80));
    looks(11, pack(84, 80));
    EXPECT_EQ(looks(60, {pack(81, 80, false)}, false), Bodies{});
    EXPECT_EQ(looks(60, pack(84, 80)), Bodies{}) << "81 % is beyond the limit";
    look({pack(80, 80, false)}, false);
    EXPECT_EQ(looks(60, pack(84, 80)), Bodies{notHolding80});
}

TEST_F(LimitWatchTest, ChargesOfTwoPointsBeyondAreNormal) {
    prime(pack(80, 80));
    EXPECT_EQ(looks(600, pack(82, 80)), Bodies{});
    EXPECT_EQ(looks(11, pack(83, 80)).size(), 1U);
}

TEST_F(LimitWatchTest, BeingBeyondAtTheStartOrWhenPluggedInIsNormal) {
    prime(pack(90, 80));
    EXPECT_EQ(looks(60, pack(90, 80)), Bodies{});
    EXPECT_EQ(looks(60, {pack(85, 80, false)}, false), Bodies{});
    EXPECT_EQ(looks(60, pack(86, 80)), Bodies{});
}

TEST_F(LimitWatchTest, TheTenMinutesAreWithoutABreak) {
    const std::vector<std::pair<const char*, std::pair<PackLimit, bool>>> breaks{
        {"back by a point", {pack(82, 80), true}},
        {"not charging", {pack(84, 80, false), true}},
        {"unplugged", {pack(84, 80, true), false}},
        {"a value that says nothing", {nonsense(84), true}},
        {"a file that cannot be read", {pack(84, std::nullopt), true}},
    };
    for (const auto& [what, one] : breaks) {
        watch = {};
        prime(pack(80, 80));
        EXPECT_EQ(looks(10, pack(84, 80)), Bodies{}) << what;
        EXPECT_EQ(look({one.first}, one.second), Bodies{}) << what;
        EXPECT_EQ(looks(10, pack(84, 80)), Bodies{}) << what;
        EXPECT_EQ(look(pack(84, 80)), Bodies{notHolding80}) << what;
    }
}

TEST_F(LimitWatchTest, ASleepIsNoBreakAndTheLookAfterItTellsNothing) {
    prime(pack(80, 80));
    looks(5, pack(84, 80));
    uptime += 8h;
    EXPECT_EQ(prime(pack(100, 80)), Bodies{});
    EXPECT_EQ(look(pack(100, 80)),
              Bodies{"The firmware's limit is 80%, but the battery is at 100% and still charging."});
}

TEST_F(LimitWatchTest, ALimitThatSomebodyLowersWasNotBrokenByTheBattery) {
    prime(pack(95, 100));
    look(pack(98, 100));
    EXPECT_EQ(looks(600, pack(98, 80)), Bodies{});
    look(pack(80, 80));
    look(pack(83, 90));
    EXPECT_EQ(looks(600, pack(84, 81)), Bodies{}) << "the firmware stops a moment later";
}

TEST_F(LimitWatchTest, HoldsBackWhatCannotBeDelivered) {
    prime(pack(80, 80));
    EXPECT_EQ(looks(60, {pack(84, 80)}, true, false), Bodies{});
    EXPECT_EQ(look(pack(84, 80)), Bodies{notHolding80});
    restart();
    prime(pack(80, 100));
    EXPECT_EQ(looks(60, {pack(80, 100)}, true, false), Bodies{});
    EXPECT_EQ(look(pack(80, 100)), Bodies{reset80});
}

TEST_F(LimitWatchTest, DoesNotTellLaterWhatIsOverByThen) {
    prime(pack(80, 80));
    looks(60, {pack(84, 80)}, true, false);
    EXPECT_EQ(looks(60, {pack(84, 80, false)}, true, true), Bodies{});
    restart();
    prime(pack(70, 100));
    looks(60, {pack(70, 100)}, true, false);
    EXPECT_EQ(look(pack(70, 80)), Bodies{});
    EXPECT_EQ(over, std::vector<Kind>{});
}

TEST_F(LimitWatchTest, TakesBackWhatUnpluggingOrTheLimitHasAnswered) {
    const auto break80 = [&] {
        look(pack(80, 80));
        EXPECT_EQ(looks(11, pack(84, 80)).size(), 1U);
    };
    break80();
    look(pack(84, 80, false));
    EXPECT_EQ(over, std::vector<Kind>{}) << "it does not charge, but why is not known";
    look({pack(84, 80)}, false);
    EXPECT_EQ(over, std::vector{Kind::notHolding});
    look({pack(84, 80)}, false);
    EXPECT_EQ(over, std::vector<Kind>{});
    break80();
    look(pack(80, 80));
    EXPECT_EQ(over, std::vector{Kind::notHolding});
    break80();
    look(pack(84, 100));
    EXPECT_EQ(over, std::vector{Kind::notHolding});
    break80();
    look(std::vector<PackLimit>{});
    EXPECT_EQ(over, std::vector{Kind::notHolding}) << "the battery was taken out";

    look(pack(80, 80));
    prime(pack(80, 100));
    EXPECT_EQ(look(pack(80, 100)), Bodies{reset80});
    look({pack(80, 100, false)}, false);
    EXPECT_EQ(over, std::vector<Kind>{});
    look(nonsense(80));
    EXPECT_EQ(over, std::vector<Kind>{});
    look(pack(80, 60));
    EXPECT_EQ(over, std::vector{Kind::reset});
}

TEST_F(LimitWatchTest, TellsOfALimitThatIsGoneAfterAStart) {
    prime(pack(70, 80));
    restart();
    EXPECT_EQ(prime(pack(70, 100)), Bodies{});
    EXPECT_EQ(look(pack(70, 100)), Bodies{reset80});
    EXPECT_EQ(looks(600, pack(70, 100)), Bodies{});
    restart();
    prime(pack(70, 100));
    EXPECT_EQ(looks(600, pack(70, 100)), Bodies{}) << "once";
}

TEST_F(LimitWatchTest, TellsOfALimitThatIsGoneAfterASleep) {
    prime(pack(70, 80));
    looks(60, pack(80, 80));
    prime(pack(70, 100));
    EXPECT_EQ(look(pack(70, 100)), Bodies{reset80});
    look(pack(70, 60)); // set again, and lost again
    prime(pack(70, 100));
    EXPECT_EQ(look(pack(70, 100)), Bodies{"The firmware's limit was 60% and is now 100%."});
}

TEST_F(LimitWatchTest, TellsOfAFileThatIsGone) {
    prime(pack(70, 80));
    restart();
    prime(pack(70, std::nullopt));
    EXPECT_EQ(look(pack(70, std::nullopt)), Bodies{"The firmware's limit was 80% and is now gone."});
}

TEST_F(LimitWatchTest, AChangeWhileItRunsWasMadeBySomebody) {
    for (const std::optional<std::int64_t> limit : {std::optional<std::int64_t>(100), std::optional<std::int64_t>()}) {
        watch = {};
        prime(pack(70, 80));
        look(pack(70, 80));
        EXPECT_EQ(looks(60, pack(70, limit)), Bodies{});
        prime(pack(70, limit));
        EXPECT_EQ(looks(60, pack(70, limit)), Bodies{});
        restart();
        prime(pack(70, limit));
        EXPECT_EQ(looks(60, pack(70, limit)), Bodies{});
    }
}

TEST_F(LimitWatchTest, AnotherLimitBelowAHundredIsNoReset) {
    prime(pack(70, 80));
    restart();
    prime(pack(70, 90));
    EXPECT_EQ(looks(60, pack(70, 90)), Bodies{});
    restart();
    prime(pack(70, 100));
    EXPECT_EQ(look(pack(70, 100)), Bodies{"The firmware's limit was 90% and is now 100%."});
}

TEST_F(LimitWatchTest, AValueThatSaysNothingIsNeitherALimitNorItsLoss) {
    prime(pack(70, 80));
    restart();
    prime(nonsense(70));
    EXPECT_EQ(looks(60, nonsense(90)), Bodies{});
    look(pack(90, 100));
    EXPECT_EQ(look(pack(90, 100)), Bodies{reset80}) << "that it says later";
    watch = {};
    prime(nonsense(10));
    EXPECT_EQ(looks(600, nonsense(100)), Bodies{});
    EXPECT_TRUE(watch.memory.limits.empty());
}

TEST_F(LimitWatchTest, WithoutALimitThereIsNothingToTell) {
    for (const std::optional<std::int64_t> limit : {std::optional<std::int64_t>(100), std::optional<std::int64_t>()}) {
        prime(pack(10, limit));
        EXPECT_EQ(looks(600, pack(100, limit)), Bodies{});
        restart();
        prime(pack(10, limit));
        EXPECT_EQ(looks(60, pack(100, limit)), Bodies{});
    }
}

TEST_F(LimitWatchTest, OneReadingProvesNothing) {
    prime(pack(70, 80));
    restart();
    prime(std::vector<PackLimit>{}); // the battery is in the dock
    EXPECT_EQ(looks(60, std::vector<PackLimit>{}), Bodies{});
    EXPECT_EQ(look(pack(70, std::nullopt)), Bodies{}) << "the driver adds the file a moment after the battery";
    EXPECT_EQ(looks(60, pack(70, 80)), Bodies{});
    restart();
    prime(std::vector<PackLimit>{});
    look(pack(70, 100));
    EXPECT_EQ(look(pack(70, 100)), Bodies{reset80}) << "but two do";
}

TEST_F(LimitWatchTest, AComingAndGoingBatteryTellsNothing) {
    prime({pack(70, 80), second(pack(60, 90))});
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(looks(5, {pack(75, 80)}), Bodies{});
        EXPECT_EQ(looks(5, {pack(75, 80), second(pack(95, 90))}), Bodies{}) << "charged elsewhere";
        EXPECT_EQ(over, std::vector<Kind>{});
    }
    EXPECT_EQ(prime(pack(75, 80)), Bodies{});
    EXPECT_EQ(looks(60, {pack(75, 80)}), Bodies{});
    EXPECT_EQ(looks(60, {pack(75, 80), second(pack(60, 90))}), Bodies{});
}

TEST_F(LimitWatchTest, AnotherBatteryInTheBayStartsAnew) {
    prime(pack(80, 80));
    PackLimit other = pack(84, 80);
    other.design = 57000;
    EXPECT_EQ(looks(60, other), Bodies{}) << "its charge has not risen here";
    restart();
    other = pack(70, 100);
    other.model = "5B10V98092";
    prime(other);
    EXPECT_EQ(looks(60, other), Bodies{}) << "the limit was that of another";
    restart();
    prime(pack(70, 100));
    EXPECT_EQ(look(pack(70, 100)), Bodies{reset80});
}

TEST_F(LimitWatchTest, WatchesEachOfTwoBatteriesForItself) {
    prime({pack(80, 80), second(pack(70, 90))});
    EXPECT_EQ(looks(11, {pack(84, 80), second(pack(84, 90))}), Bodies{notHolding80});
    EXPECT_EQ(looks(11, {pack(84, 80), second(pack(93, 90))}),
              Bodies{"The firmware's limit is 90%, but the battery is at 93% and still charging."});
    restart();
    prime({pack(70, 100), second(pack(70, 90))});
    EXPECT_EQ(look({pack(70, 100), second(pack(70, 90))}), Bodies{reset80});
}

TEST_F(LimitWatchTest, TellsOfTwoBatteriesTogether) {
    prime({pack(70, 80), second(pack(70, 90))});
    EXPECT_EQ(looks(11, {pack(84, 80), second(pack(94, 90))}),
              Bodies{notHolding80 + " The firmware's limit is 90%, but the battery is at 94% and still charging."});
    restart();
    prime({pack(70, 100), second(pack(70, 100))});
    // By their names, which say nothing to the user.
    EXPECT_EQ(look({pack(70, 100), second(pack(70, 100))}),
              Bodies{"The firmware's limit was 90% and is now 100%. " + reset80});
    watch = {};
    prime({pack(70, 80), second(pack(70, 80))});
    restart();
    prime({pack(70, 100), second(pack(70, 100))});
    EXPECT_EQ(look({pack(70, 100), second(pack(70, 100))}), Bodies{reset80}) << "the same is said once";
}

TEST_F(LimitWatchTest, TwoBatteriesOfOneKindAreNotMistakenForEachOther) {
    const PackLimit limited = pack(70, 80);
    const PackLimit free = second(pack(70, 100), "5B10V98091");
    prime({limited, free});
    EXPECT_EQ(looks(60, {limited, free}), Bodies{});
    restart();
    prime({limited, free});
    EXPECT_EQ(looks(60, {limited, free}), Bodies{});
    restart();
    prime({pack(70, 100), free});
    EXPECT_EQ(look({pack(70, 100), free}), Bodies{reset80});
}

TEST_F(LimitWatchTest, ConcernsMachinesThatHaveOrHadALimit) {
    EXPECT_FALSE(watch.concernsMachine());
    prime(pack(70, std::nullopt));
    EXPECT_FALSE(watch.concernsMachine());
    prime(pack(70, 100));
    EXPECT_TRUE(watch.concernsMachine()) << "it could have one";
    prime(pack(70, 80));
    restart();
    EXPECT_TRUE(watch.concernsMachine()) << "it had one";
    prime(pack(70, std::nullopt));
    EXPECT_EQ(look(pack(70, std::nullopt)).size(), 1U);
    EXPECT_TRUE(watch.concernsMachine()) << "the card stays while the reminder is true";
    restart();
    prime(pack(70, std::nullopt));
    EXPECT_FALSE(watch.concernsMachine());
}

/// Batteries, adapters, users and sleeps as they come, against a second reckoning.
TEST(LimitWatch, SaysWhatAPlainReckoningSays) {
    std::map<Kind, int> told;
    std::map<Kind, int> takenBack;
    for (std::uint64_t seed = 0; seed < 600; ++seed) {
        Dice dice(seed);
        LimitWatch watch;
        PlainLimits plain;
        std::set<std::string> screen;
        PlainLimits::Look look{.starts = true, .follows = true};
        look.packs = {{.bay = "BAT0", .battery = "A", .percent = 70, .limit = 80}};
        if (dice.coin())
            look.packs.push_back({.bay = "BAT1", .battery = dice.coin() ? "A" : "B", .percent = 60, .limit = 90});
        const auto all = look.packs;
        for (int step = 0; step < 150; ++step) {
            look.time += 60.0 * static_cast<double>(dice.from(1, 5));
            if (dice.oneIn(20))
                look.packs = {all[dice.below(all.size())]};
            else if (dice.oneIn(10))
                look.packs = all;
            if (dice.oneIn(8))
                look.pluggedIn = !look.pluggedIn;
            look.mayTell = dice.oneIn(10) ? !look.mayTell : look.mayTell;
            for (auto& pack : look.packs) {
                pack.percent += static_cast<int>(look.pluggedIn ? dice.from(-1, 4) : dice.from(-6, 0));
                pack.percent = std::clamp(pack.percent, 60, 100);
                pack.charges = look.pluggedIn && !dice.oneIn(20);
                if (dice.oneIn(look.follows ? 3 : 25))
                    pack.limit = dice.of(std::vector{80, 80, 90, 100, 100, PlainLimits::gone, PlainLimits::nonsense});
                if (dice.oneIn(60))
                    pack.battery = pack.battery == "A" ? "B" : "A";
            }
            const auto due = plain.look(look);
            std::vector<PackLimit> packs;
            for (const auto& pack : look.packs)
                packs.push_back({.device = pack.bay,
                                 .model = pack.battery,
                                 .design = {},
                                 .percent = pack.percent,
                                 .isCharging = pack.charges,
                                 .tellsLimit = pack.limit != PlainLimits::gone,
                                 .limit = pack.limit > 0 ? std::optional<std::int64_t>(pack.limit) : std::nullopt});
            const auto outcome =
                watch.run(packs, look.pluggedIn, Duration(look.time), look.mayTell && !look.follows, look.follows);
            const std::string where = "seed " + std::to_string(seed) + ", step " + std::to_string(step);
            for (const Kind kind : outcome.over)
                takenBack[kind] += static_cast<int>(screen.erase(std::string(rawValue(kind))));
            ASSERT_EQ(outcome.due.size(), due.size()) << where;
            for (const LimitAlert& alert : outcome.due) {
                const std::string identifier(rawValue(alert.kind));
                ASSERT_TRUE(due.contains(identifier)) << where << ": " << alert.body;
                std::size_t length = due.at(identifier).size() - 1; // blanks between the sentences
                for (const std::string& sentence : due.at(identifier)) {
                    EXPECT_NE(alert.body.find(sentence), std::string::npos) << where << ": " << alert.body;
                    length += sentence.size();
                }
                EXPECT_EQ(alert.body.size(), length) << where << ": " << alert.body;
                screen.insert(identifier);
                ++told[alert.kind];
            }
            ASSERT_EQ(screen, plain.shown()) << where;
            look.follows = dice.oneIn(12);
            // What is still on the screen after a start belongs to the one before.
            look.starts = look.follows && screen.empty() && dice.coin();
            if (look.starts) {
                LimitWatch fresh;
                fresh.memory = LimitMemory::decode(watch.memory.encoded());
                watch = fresh;
            }
        }
    }
    for (const Kind kind : {Kind::notHolding, Kind::reset}) {
        EXPECT_GT(told[kind], 50);
        EXPECT_GT(takenBack[kind], 20);
    }
}

} // namespace
