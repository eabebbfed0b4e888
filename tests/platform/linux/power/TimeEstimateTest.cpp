// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/TimeEstimate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <ostream>
#include <string>

void PrintTo(const TimeEstimate::Minutes& minutes, std::ostream* out) {
    *out << minutes.toEmpty.value_or(-1) << " min to empty, " << minutes.toFull.value_or(-1) << " min to full";
}

namespace {

using Flow = TimeEstimate::Flow;
using Minutes = TimeEstimate::Minutes;
using Reading = TimeEstimate::Reading;

const Minutes unknown{};

Minutes toEmpty(std::int64_t minutes) {
    return {.toEmpty = minutes, .toFull = std::nullopt};
}

Minutes toFull(std::int64_t minutes) {
    return {.toEmpty = std::nullopt, .toFull = minutes};
}

/// A reading on battery: mWh stored, mW drawn (none where the firmware reports none).
Reading draining(double seconds, double now, std::optional<double> drawn) {
    Reading reading;
    reading.uptime = Duration(1000 + seconds);
    reading.slept = Duration(70);
    reading.flow = Flow::discharging;
    reading.batteries = "BAT0/energy ";
    reading.now = now;
    reading.rate = drawn ? std::optional(-*drawn) : std::nullopt;
    reading.slowest = 500;
    return reading;
}

/// A reading while charging: mWh still to be stored, mW taken in.
Reading filling(double seconds, double remaining, std::optional<double> taken) {
    Reading reading = draining(seconds, 50'000 - remaining, std::nullopt);
    reading.flow = Flow::charging;
    reading.onExternalPower = true;
    reading.remaining = remaining;
    reading.rate = taken;
    return reading;
}

struct TimeEstimateTest : ::testing::Test {
    TimeEstimate estimate{1};

    /// Takes readings until there is a time: 50 Wh at 10 W.
    void settleOnBattery() {
        estimate.update(draining(0, 50'000, 10'000));
        ASSERT_EQ(estimate.update(draining(15, 50'000, 10'000)), toEmpty(300));
    }
};

TEST_F(TimeEstimateTest, TellsATimeAfterFifteenSecondsAndTwoReadings) {
    EXPECT_EQ(estimate.update(draining(0, 50'000, 10'000)), unknown);
    EXPECT_EQ(estimate.update(draining(10, 50'000, 10'000)), unknown);
    EXPECT_EQ(estimate.update(draining(14.9, 50'000, 10'000)), unknown);
    EXPECT_EQ(estimate.update(draining(15, 50'000, 10'000)), toEmpty(300));
}

TEST_F(TimeEstimateTest, TellsATimeAtTheSecondReadingWhenThatIsLater) {
    EXPECT_EQ(estimate.update(draining(0, 50'000, 10'000)), unknown);
    EXPECT_EQ(estimate.update(draining(60, 50'000, 10'000)), toEmpty(300));
}

TEST_F(TimeEstimateTest, ChargingIsTimedByWhatIsStillToBeStored) {
    EXPECT_EQ(estimate.update(filling(0, 20'000, 40'000)), unknown);
    EXPECT_EQ(estimate.update(filling(15, 20'000, 40'000)), toFull(30));
    EXPECT_EQ(estimate.update(filling(16, 1, 40'000)), toFull(0));
}

TEST_F(TimeEstimateTest, TellsNoTimeWhenNothingIsLeftToStoreAndItStillCharges) {
    estimate.update(filling(0, 0, 40'000));
    EXPECT_EQ(estimate.update(filling(15, 0, 40'000)), unknown);
}

TEST_F(TimeEstimateTest, DistrustsTheReadingsOfTheFirstTenSeconds) {
    estimate.update(draining(0, 50'000, 90'000));
    estimate.update(draining(5, 50'000, 90'000));
    estimate.update(draining(9.9, 50'000, 90'000));
    EXPECT_EQ(estimate.update(draining(15, 50'000, 10'000)), toEmpty(300));
}

TEST_F(TimeEstimateTest, TrustsAReadingFromTheTenthSecondOn) {
    estimate.update(draining(0, 50'000, 10'000));
    estimate.update(draining(10, 50'000, 20'000));
    // The new rate has little weight yet.
    const auto minutes = estimate.update(draining(15, 50'000, 10'000)).toEmpty;
    ASSERT_TRUE(minutes);
    EXPECT_LT(*minutes, 200);
    EXPECT_GE(*minutes, 150);
}

TEST_F(TimeEstimateTest, TakesAStepInTheLoadOverWithinMinutes) {
    settleOnBattery();
    // The first value counts for two minutes, and these are three: 16 W.
    EXPECT_EQ(estimate.update(draining(195, 50'000, 20'000)), toEmpty(187));
}

TEST_F(TimeEstimateTest, AMomentarySpikeHardlyMovesTheTime) {
    settleOnBattery();
    const auto minutes = estimate.update(draining(16, 50'000, 40'000)).toEmpty;
    ASSERT_TRUE(minutes);
    EXPECT_GT(*minutes, 290);
    EXPECT_LT(*minutes, 300);
}

TEST_F(TimeEstimateTest, TheStepDoesNotDependOnHowOftenOneReads) {
    for (const int step : {1, 5, 30, 60}) {
        TimeEstimate often{1};
        often.update(draining(0, 50'000, 10'000));
        often.update(draining(15, 50'000, 10'000));
        Minutes minutes;
        for (int seconds = step; seconds <= 240; seconds += step)
            minutes = often.update(draining(15 + seconds, 50'000, 20'000));
        EXPECT_GE(*minutes.toEmpty, 175) << step; // 50 Wh at 16.7 to 17.1 W
        EXPECT_LE(*minutes.toEmpty, 180) << step;
    }
}

TEST_F(TimeEstimateTest, ReadingTwiceAtOneInstantChangesNothing) {
    settleOnBattery();
    EXPECT_EQ(estimate.update(draining(15, 50'000, 90'000)), toEmpty(300));
}

TEST_F(TimeEstimateTest, StartsAnewWhenSomethingElseBegins) {
    const auto unplugged = [](double seconds) { return draining(seconds, 50'000, 10'000); };
    struct Row {
        const char* what;
        void (*change)(Reading&);
    };
    const Row rows[] = {
        {"another direction", [](Reading& reading) { reading.flow = Flow::charging; }},
        {"another source of power", [](Reading& reading) { reading.onExternalPower = true; }},
        {"another pack", [](Reading& reading) { reading.batteries = "BAT0/energy BAT1/energy "; }},
        {"sleep", [](Reading& reading) { reading.slept += Duration(1); }},
        {"a clock that went back", [](Reading& reading) { reading.uptime = Duration(999); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        TimeEstimate running{1};
        running.update(unplugged(0));
        ASSERT_EQ(running.update(unplugged(60)), toEmpty(300));
        Reading changed = unplugged(61);
        changed.remaining = 50'000;
        row.change(changed);
        changed.rate = changed.flow == Flow::charging ? 20'000 : -20'000;
        EXPECT_EQ(running.update(changed), unknown);
        EXPECT_TRUE(running.isSettling());
        changed.uptime += Duration(14.9);
        EXPECT_EQ(running.update(changed), unknown);
        changed.uptime += Duration(0.1);
        const Minutes minutes = running.update(changed);
        EXPECT_EQ(minutes, changed.flow == Flow::charging ? toFull(150) : toEmpty(150)); // nothing of the old 10 W
    }
}

TEST_F(TimeEstimateTest, GoesOnWhenNothingElseBegan) {
    settleOnBattery();
    Reading reading = draining(16, 49'990, 10'000);
    reading.slept += Duration(0.9); // the two clocks behind `slept` are read one after the other
    reading.slowest = 400;
    reading.remaining = 7;
    EXPECT_EQ(estimate.update(reading), toEmpty(299));
}

TEST_F(TimeEstimateTest, ForgetsTheOldRateAndTheOldAmountsAtANewStart) {
    estimate.update(draining(0, 50'000, std::nullopt));
    estimate.update(draining(10, 50'000, std::nullopt));
    EXPECT_EQ(estimate.update(draining(70, 49'000, std::nullopt)), toEmpty(49)); // 1 Wh in a minute
    Reading charging = filling(71, 1'000, std::nullopt);
    charging.now = 60'000; // more than at the start of the last run, so a rate could be derived from the two
    estimate.update(charging);
    charging.uptime += Duration(10);
    estimate.update(charging);
    charging.uptime += Duration(59);
    EXPECT_EQ(estimate.update(charging), unknown);
}

TEST_F(TimeEstimateTest, DerivesTheRateFromReadingsAMinuteApartWhereNoneIsReported) {
    estimate.update(draining(0, 50'000, std::nullopt));
    estimate.update(draining(10, 50'000, std::nullopt));
    EXPECT_EQ(estimate.update(draining(69, 49'900, std::nullopt)), unknown);
    EXPECT_EQ(estimate.update(draining(70, 49'900, std::nullopt)), toEmpty(490)); // 100 mWh in 59 s: 6.1 W
}

TEST_F(TimeEstimateTest, TheDistrustedReadingsAreNoBaseForADerivedRate) {
    estimate.update(draining(0, 60'000, std::nullopt));
    estimate.update(draining(9, 60'000, std::nullopt));
    estimate.update(draining(20, 50'000, std::nullopt));
    EXPECT_EQ(estimate.update(draining(79, 49'900, std::nullopt)), unknown);
    EXPECT_EQ(estimate.update(draining(80, 49'900, std::nullopt)), toEmpty(490));
}

TEST_F(TimeEstimateTest, DerivesTheRateOfChargingToo) {
    estimate.update(filling(0, 20'000, std::nullopt));
    estimate.update(filling(10, 20'000, std::nullopt));
    EXPECT_EQ(estimate.update(filling(70, 19'000, std::nullopt)), toFull(19));
}

TEST_F(TimeEstimateTest, DerivesTheRateFromTwoReadingsFarApartToo) {
    estimate.update(draining(0, 50'000, std::nullopt));
    estimate.update(draining(10, 50'000, std::nullopt));
    EXPECT_EQ(estimate.update(draining(1'210, 48'000, std::nullopt)), toEmpty(480)); // 2 Wh in twenty minutes
}

TEST_F(TimeEstimateTest, DerivesNothingUntilTheAmountHasMoved) {
    estimate.update(draining(0, 50'000, std::nullopt));
    for (int seconds = 60; seconds <= 300; seconds += 60)
        EXPECT_EQ(estimate.update(draining(seconds, 50'000, std::nullopt)), unknown) << seconds;
    EXPECT_EQ(estimate.update(draining(360, 49'500, std::nullopt)), toEmpty(495)); // 0.5 Wh in five minutes
}

TEST_F(TimeEstimateTest, DerivesNothingFromAnAmountThatMovesTheWrongWay) {
    estimate.update(draining(0, 50'000, std::nullopt));
    estimate.update(draining(10, 50'000, std::nullopt));
    EXPECT_EQ(estimate.update(draining(70, 51'000, std::nullopt)), unknown);
    TimeEstimate charging{1};
    charging.update(filling(0, 20'000, std::nullopt));
    charging.update(filling(10, 20'000, std::nullopt));
    EXPECT_EQ(charging.update(filling(70, 21'000, std::nullopt)), unknown);
}

TEST_F(TimeEstimateTest, ARateOfNothingIsNoFirstRate) {
    estimate.update(draining(0, 50'000, 0));
    EXPECT_EQ(estimate.update(draining(10, 50'000, 0)), unknown);
    EXPECT_EQ(estimate.update(draining(15, 50'000, 10'000)), toEmpty(300));
}

TEST_F(TimeEstimateTest, DerivesTheRateWhereTheReportedOneIsAlwaysNothing) {
    estimate.update(draining(0, 50'000, 0));
    estimate.update(draining(10, 50'000, 0));
    EXPECT_EQ(estimate.update(draining(15, 50'000, 0)), unknown);
    EXPECT_EQ(estimate.update(draining(70, 49'900, 0)), toEmpty(499));
}

TEST_F(TimeEstimateTest, ADerivedRateFollowsTheLoadWithinFifteenMinutes) {
    double now = 90'000;
    Minutes minutes;
    for (int seconds = 0; seconds <= 3600; seconds += 60) {
        minutes = estimate.update(draining(seconds, now, std::nullopt));
        now -= seconds < 2700 ? 100 : 1'000; // 6 W for 45 minutes, then 60 W for fifteen
    }
    EXPECT_EQ(minutes, toEmpty(71)); // 70.5 Wh at the 60 W of the last fifteen minutes, and half of the last one
}

TEST_F(TimeEstimateTest, ARateDerivedFromCoarseStepsHoldsUntilTheNextIsOverdue) {
    // A step of 500 mWh every five minutes: 6 W.
    for (int seconds = 10; seconds < 1510; seconds += 20) {
        const int steps = (seconds - 10) / 300;
        estimate.update(draining(seconds, 50'000 - steps * 500, std::nullopt));
    }
    // 475 minutes in the middle of the step; it flows on unseen.
    EXPECT_EQ(estimate.update(draining(1'510, 47'500, std::nullopt)), toEmpty(477));
    EXPECT_EQ(estimate.update(draining(1'600, 47'500, std::nullopt)), toEmpty(476));
    EXPECT_EQ(estimate.update(draining(1'700, 47'500, std::nullopt)), toEmpty(474));
    EXPECT_EQ(estimate.update(draining(1'809, 47'500, std::nullopt)), toEmpty(472));
    // The next step has not come. If it came now, there would be two in twenty minutes: 3 W, and all of it has flowed.
    EXPECT_EQ(estimate.update(draining(2'410, 47'500, std::nullopt)), toEmpty(945));
}

TEST_F(TimeEstimateTest, TheFirstStepOfACoarseGaugeIsBelievedForAsLongAgain) {
    estimate.update(draining(0, 50'000, std::nullopt));
    estimate.update(draining(10, 50'000, std::nullopt));
    for (const int seconds : {310, 400, 500, 610})
        EXPECT_EQ(estimate.update(draining(seconds, 49'500, std::nullopt)), toEmpty(495)) << seconds; // 6 W
    EXPECT_EQ(estimate.update(draining(910, 49'500, std::nullopt)), toEmpty(742)); // if two took 15 min
}

TEST_F(TimeEstimateTest, StepsWithinAMinuteAreNotTakenForARateOfTheirOwn) {
    estimate.update(draining(0, 50'000, std::nullopt));
    estimate.update(draining(10, 50'000, std::nullopt));
    estimate.update(draining(69, 49'500, std::nullopt));
    EXPECT_EQ(estimate.update(draining(370, 49'500, std::nullopt)),
              toEmpty(297)); // 0.5 Wh in three minutes, not in one
}

TEST_F(TimeEstimateTest, ANewBeginningAtTheFirstChangeLosesNoTime) {
    estimate.update(draining(0, 50'000, std::nullopt));
    estimate.update(draining(10, 50'000, std::nullopt));
    EXPECT_EQ(estimate.update(draining(70, 49'900, std::nullopt)), toEmpty(499));
    EXPECT_EQ(estimate.update(draining(75, 49'880, std::nullopt)), toEmpty(450)); // 120 mWh in 65 s, not yet from 70 on
    EXPECT_EQ(estimate.update(draining(130, 49'780, std::nullopt)), toEmpty(415)); // 120 mWh in 60 s, and half of it
}

/// Reads 10 W at seconds 0 and 10; the first change is 10 mWh less, at second 20.
struct TimeEstimateAfterAChangeTest : TimeEstimateTest {
    TimeEstimateAfterAChangeTest() {
        estimate.update(draining(0, 60'010, 10'000));
        estimate.update(draining(10, 50'010, 10'000));
        estimate.update(draining(20, 50'000, 10'000));
    }
};

TEST_F(TimeEstimateAfterAChangeTest, WhatHasGoneOutWeighsInForThePartOfFifteenMinutesThatItCovers) {
    EXPECT_EQ(estimate.update(draining(79, 49'600, 10'000)), toEmpty(297));  // less than a minute does not count
    EXPECT_EQ(estimate.update(draining(110, 49'500, 10'000)), toEmpty(271)); // 20 W with a weight of a tenth: 11 W
    EXPECT_EQ(estimate.update(draining(470, 47'500, 10'000)), toEmpty(194)); // 20 W with a weight of one half: 15 W
}

TEST_F(TimeEstimateAfterAChangeTest, OnlyWhatHasGoneOutCountsAfterFifteenMinutes) {
    for (int minutes = 1; minutes < 15; ++minutes)
        estimate.update(draining(20 + 60 * minutes, 50'000 - 200 * minutes, 10'000)); // 12 W
    EXPECT_EQ(estimate.update(draining(920, 47'000, 10'000)), toEmpty(235));
    EXPECT_EQ(estimate.update(draining(1'820, 43'000, 10'000)), toEmpty(192)); // 14 W in half an hour
    EXPECT_EQ(estimate.update(draining(3'620, 35'000, 10'000)), toEmpty(156)); // 15 W in an hour
}

TEST_F(TimeEstimateAfterAChangeTest, AnAmountThatMovesTheWrongWayLeavesTheReportedRateAlone) {
    estimate.update(draining(60, 50'400, 10'000));
    EXPECT_EQ(estimate.update(draining(120, 50'500, 10'000)), toEmpty(303));
}

TEST_F(TimeEstimateTest, AnAmountThatIsHeldAtFullForAWhileDoesNotLengthenTheTime) {
    for (int seconds = 0; seconds <= 600; seconds += 60)
        EXPECT_EQ(estimate.update(draining(seconds, 50'000, 10'000)), seconds == 0 ? unknown : toEmpty(300));
    EXPECT_EQ(estimate.update(draining(660, 49'990, 10'000)), toEmpty(299)); // 10 mWh in ten minutes are ignored
    // From second 660 on, 12 W.
    estimate.update(draining(710, 49'990 - 166, 10'000));
    // The last step took 14 minutes; half of it is left.
    EXPECT_EQ(estimate.update(draining(1'560, 46'990, 10'000)), toEmpty(242));
}

TEST_F(TimeEstimateAfterAChangeTest, ACorrectionOfTheGaugeIsNotTakenForALoad) {
    for (int seconds = 30; seconds <= 560; seconds += 10)
        estimate.update(draining(seconds, 50'000 - (seconds - 20) / 10.0 * 28, 10'000)); // near 10 W
    estimate.update(draining(620, 46'800, 10'000));                                      // 1688 mWh in a minute: 101 W
    EXPECT_EQ(estimate.update(draining(679, 46'600, 10'000)), toEmpty(278)); // no rate is derived for a minute
    EXPECT_EQ(estimate.update(draining(710, 46'300, 10'000)), toEmpty(252)); // 20 W since, with a weight of a tenth
}

TEST_F(TimeEstimateAfterAChangeTest, ACorrectionWithinAMinuteIsNotTakenForALoadEither) {
    estimate.update(draining(40, 48'500, 10'000));
    EXPECT_EQ(estimate.update(draining(110, 48'250, 10'000)), toEmpty(283)); // 12.9 W in the last 70 s
}

TEST_F(TimeEstimateTest, ACorrectionOfTheGaugeIsAsGoodABeginningAsAnyChange) {
    estimate.update(draining(0, 51'000, 10'000));
    estimate.update(draining(10, 51'000, 10'000));
    estimate.update(draining(20, 50'000, 10'000));
    EXPECT_EQ(estimate.update(draining(110, 49'500, 10'000)), toEmpty(271)); // 20 W with a weight of a tenth
}

TEST_F(TimeEstimateAfterAChangeTest, ABurstOfTenTimesTheReportedRateIsALoad) {
    for (int seconds = 30; seconds <= 560; seconds += 10)
        estimate.update(draining(seconds, 50'000 - (seconds - 20) / 10.0 * 28, 10'000));
    EXPECT_LT(estimate.update(draining(620, 46'830, 10'000)).toEmpty, 200); // 1658 mWh in a minute: 99.5 W
}

TEST_F(TimeEstimateTest, ADeadReportedRateMakesNoLoadImpossible) {
    settleOnBattery();
    for (int seconds = 75; seconds <= 1'875; seconds += 60)
        estimate.update(draining(seconds, 50'000 - (seconds - 15) * 5 / 3.0, 0)); // 6 W
    EXPECT_EQ(estimate.update(draining(1'935, 46'800, 0)), toEmpty(468));
}

TEST_F(TimeEstimateTest, EachRunBeginsAtItsOwnFirstChange) {
    estimate.update(draining(0, 50'000, 10'000));
    for (int seconds = 20; seconds <= 50; seconds += 30)
        estimate.update(draining(seconds, 50'000 - seconds, 10'000));
    estimate.update(filling(201, 0, std::nullopt));
    for (int seconds = 210; seconds <= 810; seconds += 60)
        estimate.update(draining(seconds, 50'000, 10'000));
    EXPECT_EQ(estimate.update(draining(870, 49'990, 10'000)), toEmpty(299));
}

TEST_F(TimeEstimateTest, WhatHasMovedCountsWhileChargingToo) {
    estimate.update(filling(0, 50'333, 10'000));
    for (int seconds = 10; seconds <= 910; seconds += 50)
        estimate.update(filling(seconds, 50'333.3 - seconds / 3600.0 * 20'000, 10'000)); // tells 10 W, stores 20 W
    EXPECT_EQ(estimate.update(filling(960, 45'000, 10'000)), toFull(135));
}

TEST_F(TimeEstimateTest, KeepsAReportedRateThroughAGapOfFiveMinutes) {
    settleOnBattery();
    EXPECT_EQ(estimate.update(draining(315, 49'005, std::nullopt)), toEmpty(294));
    // After that it no longer counts as a rate, and the derived one takes over: 995 mWh in 300 s.
    EXPECT_EQ(estimate.update(draining(316, 49'005, std::nullopt)), toEmpty(246));
}

TEST_F(TimeEstimateTest, ARateThatFallsToNothingIsAtLastUnknown) {
    settleOnBattery();
    EXPECT_NE(estimate.update(draining(75, 50'000, 0)), unknown);
    EXPECT_EQ(estimate.update(draining(1'000, 50'000, 0)), unknown);
}

TEST_F(TimeEstimateTest, DerivesTheRateWhereTheReportedOneHasDiedDown) {
    settleOnBattery();
    estimate.update(draining(75, 49'000, 0));
    EXPECT_EQ(estimate.update(draining(615, 40'000, 0)), toEmpty(44)); // 9 Wh in nine minutes, and half of them
}

TEST_F(TimeEstimateTest, ARateOfTheWrongSignTellsNoTime) {
    estimate.update(draining(0, 50'000, -10'000));
    EXPECT_EQ(estimate.update(draining(15, 50'000, -10'000)), unknown);
    EXPECT_EQ(estimate.update(draining(60, 50'000, -10'000)), unknown);
    TimeEstimate charging{1};
    charging.update(filling(0, 20'000, -10'000));
    EXPECT_EQ(charging.update(filling(60, 20'000, -10'000)), unknown);
}

TEST_F(TimeEstimateTest, ARateBelowTheSlowestTellsNoTime) {
    estimate.update(draining(0, 10'000, 499.9));
    EXPECT_EQ(estimate.update(draining(15, 10'000, 499.9)), unknown);
    TimeEstimate justEnough{1};
    justEnough.update(draining(0, 10'000, 500));
    EXPECT_EQ(justEnough.update(draining(15, 10'000, 500)), toEmpty(1200));
    TimeEstimate derived{1};
    derived.update(draining(0, 10'000, std::nullopt));
    derived.update(draining(10, 10'000, std::nullopt));
    EXPECT_EQ(derived.update(draining(110, 9'987, std::nullopt)), unknown); // 468 mW
    EXPECT_NE(derived.update(draining(120, 9'984, std::nullopt)), unknown); // 524 mW
}

TEST_F(TimeEstimateTest, ARateOfNothingTellsNoTimeEvenWithoutALimit) {
    Reading reading = draining(0, 10'000, 0);
    reading.slowest = 0;
    estimate.update(reading);
    reading.uptime += Duration(15);
    EXPECT_EQ(estimate.update(reading), unknown);
}

TEST_F(TimeEstimateTest, TellsNoTimeBeyondTwoDaysToEmptyOrTwentyHoursToFull) {
    const auto lasting = [](double amount) {
        TimeEstimate fresh{1};
        fresh.update(draining(0, amount, 1'000));
        return fresh.update(draining(15, amount, 1'000));
    };
    EXPECT_EQ(lasting(48'000), toEmpty(2880));
    EXPECT_EQ(lasting(48'001), unknown);
    EXPECT_EQ(lasting(20'001), toEmpty(1200));
    const auto taking = [](double amount) {
        TimeEstimate fresh{1};
        fresh.update(filling(0, amount, 1'000));
        return fresh.update(filling(15, amount, 1'000));
    };
    EXPECT_EQ(taking(20'000), toFull(1200));
    EXPECT_EQ(taking(20'001), unknown);
}

TEST_F(TimeEstimateTest, RoundsDownToWholeMinutes) {
    estimate.update(draining(0, 50'000, 10'000));
    EXPECT_EQ(estimate.update(draining(15, 9'999, 10'000)), toEmpty(59));
    EXPECT_EQ(estimate.update(draining(16, 10'000, 10'000)), toEmpty(60));
    EXPECT_EQ(estimate.update(draining(17, 100, 10'000)), toEmpty(0));
}

TEST_F(TimeEstimateTest, TellsNoTimeWhileNothingFlows) {
    Reading held = draining(0, 50'000, 10'000);
    held.flow = Flow::none;
    held.onExternalPower = true;
    for (const double seconds : {0.0, 15.0, 60.0, 3600.0}) {
        held.uptime = Duration(1000 + seconds);
        EXPECT_EQ(estimate.update(held), unknown) << seconds;
        EXPECT_FALSE(estimate.isSettling()) << seconds;
    }
}

TEST_F(TimeEstimateTest, TellsNoTimeWithoutKnowingWhatIsStored) {
    Reading reading = draining(0, 0, 10'000);
    reading.now.reset();
    estimate.update(reading);
    reading.uptime += Duration(60);
    EXPECT_EQ(estimate.update(reading), unknown);
}

TEST_F(TimeEstimateTest, IsSettlingOnlyDuringTheFirstFifteenSecondsOfARun) {
    EXPECT_FALSE(estimate.isSettling());
    estimate.update(draining(0, 50'000, std::nullopt));
    EXPECT_TRUE(estimate.isSettling());
    estimate.update(draining(14.9, 50'000, std::nullopt));
    EXPECT_TRUE(estimate.isSettling());
    estimate.update(draining(15, 50'000, std::nullopt));
    EXPECT_FALSE(estimate.isSettling());
    estimate.update(filling(16, 100, 5'000));
    EXPECT_TRUE(estimate.isSettling());
}

/// A battery of 50 Wh that goes on from minute to minute. Rates are in mW, negative on battery.
struct TimeEstimateDayTest : TimeEstimateTest {
    double seconds = 0;
    double stored = 50'000;
    double slept = 70;
    std::string batteries = "BAT0/energy ";
    Reading lastReading;

    Minutes go(double duration, double rate, std::optional<double> reported) {
        seconds += duration;
        stored += rate * duration / 3600;
        Reading reading = draining(seconds, stored, std::nullopt);
        reading.slept = Duration(slept);
        reading.batteries = batteries;
        reading.rate = reported;
        reading.full = 50'000;
        if (rate > 0) {
            reading.flow = Flow::charging;
            reading.onExternalPower = true;
            reading.remaining = 50'000 - stored;
        }
        lastReading = reading;
        return estimate.update(reading);
    }

    /// The last told time of some minutes at one rate.
    Minutes goMinutes(int minutes, double rate) {
        Minutes told;
        for (int i = 0; i < minutes; ++i)
            told = go(60, rate, rate);
        return told;
    }

    /// The first told time after a plug, or a sleep.
    Minutes begin(double rate, std::optional<double> reported) {
        go(0.1, rate, reported);
        return go(15, rate, reported);
    }
    Minutes begin(double rate) { return begin(rate, rate); }

    /// On battery, a busy minute and a quiet one in turn: 13 W.
    Minutes workMinutes(int minutes) {
        Minutes told;
        for (int i = 0; i < minutes; ++i)
            told = goMinutes(1, i % 2 == 0 ? -20'000 : -6'000);
        return told;
    }

    /// What the pack takes of 36 W with so much stored: all below the knee, and above it less and less down to 3 W.
    static double taken(double stored, double knee = 0.8) {
        return std::min(36'000.0, 3'000 + 33'000 * (1 - stored / 50'000) / (1 - knee));
    }

    static double minutesToFull(double stored, double knee = 0.8) {
        int passed = 0;
        for (; stored < 50'000; ++passed)
            stored += taken(stored, knee) / 3600;
        return passed / 60.0;
    }

    Minutes chargeMinutes(int minutes, double knee = 0.8) {
        Minutes told;
        for (int i = 0; i < minutes; ++i)
            told = goMinutes(1, taken(stored, knee));
        return told;
    }
};

double number(std::optional<std::int64_t> minutes) {
    return static_cast<double>(minutes.value_or(-1));
}

TEST_F(TimeEstimateDayTest, KnowsFromTheBeginningThatAChargeWillTaper) {
    stored = 20'000;
    const double truth = minutesToFull(stored);
    EXPECT_NEAR(truth, 79, 1); // at the first rate it would be 50
    EXPECT_NEAR(number(begin(36'000).toFull), truth, 0.1 * truth);
}

TEST_F(TimeEstimateDayTest, TellsTheTimeAllTheWayThroughTheTaper) {
    stored = 20'000;
    begin(36'000);
    while (stored < 49'000) {
        const double told = number(chargeMinutes(1).toFull);
        EXPECT_NEAR(told, minutesToFull(stored), 0.15 * minutesToFull(stored) + 1) << stored;
    }
}

TEST_F(TimeEstimateDayTest, TellsTheTimeOfAChargeThatBeginsInTheTaper) {
    stored = 44'000;
    begin(taken(stored));
    for (int minute = 0; minute < 14; ++minute) {
        const double told = number(chargeMinutes(1).toFull);
        EXPECT_NEAR(told, minutesToFull(stored), 0.1 * minutesToFull(stored)) << minute;
    }
}

TEST_F(TimeEstimateDayTest, ASlowChargeTapersLate) {
    stored = 30'000;
    // 10 W are taken until 46 Wh; what is left would take 84 minutes at that rate.
    EXPECT_NEAR(number(begin(10'000).toFull), 120 + 10, 10);
}

TEST_F(TimeEstimateDayTest, AChargeThatEndsBelowTheKneeDoesNotTaper) {
    Reading reading = filling(0, 10'000, 20'000);
    reading.full = 100'000; // so it ends at half
    estimate.update(reading);
    reading.uptime += Duration(15);
    EXPECT_EQ(estimate.update(reading), toFull(30));
}

TEST_F(TimeEstimateDayTest, ALaterKneeIsKnownOnceTheRateProvesIt) {
    stored = 44'000;
    const double told = number(begin(36'000).toFull);
    EXPECT_NEAR(told, minutesToFull(stored, 0.9), 3);
}

/// The first told time of a charge, divided by the true one; then it charges to the end.
struct TimeEstimateChargesTest : TimeEstimateDayTest {
    double chargeFully(double knee) {
        goMinutes(1, -15'000);
        stored = 10'000;
        const double told = number(begin(36'000).toFull);
        chargeMinutes(150, knee);
        return told / minutesToFull(10'000, knee);
    }
};

TEST_F(TimeEstimateChargesTest, OneChargeShowsWhereTheNextWillTaper) {
    EXPECT_LT(chargeFully(0.6), 0.85);
    EXPECT_NEAR(chargeFully(0.6), 1, 0.1);
    EXPECT_GT(chargeFully(0.9), 1.2);
    EXPECT_NEAR(chargeFully(0.9), 1, 0.1);
    EXPECT_LT(chargeFully(0.6), 0.75);
    EXPECT_NEAR(chargeFully(0.6), 1, 0.2);
}

TEST_F(TimeEstimateChargesTest, AnotherPackTapersAsMostDo) {
    const double first = chargeFully(0.6);
    goMinutes(1, -15'000);
    batteries = "BAT1/energy ";
    EXPECT_NEAR(chargeFully(0.6), first, 0.01);
}

TEST_F(TimeEstimateChargesTest, AChargeThatWasBrokenOffShowsNoTaper) {
    const double first = chargeFully(0.6);
    estimate = TimeEstimate(1);
    stored = 10'000;
    goMinutes(40, 20'000);
    EXPECT_NEAR(chargeFully(0.6), first, 0.05);
}

TEST_F(TimeEstimateChargesTest, AMachineThatReportsNoRateTapersToo) {
    chargeFully(0.8);
    goMinutes(20, -15'000);
    stored = 42'500;
    const double told = number(begin(taken(stored), std::nullopt).toFull);
    EXPECT_NEAR(told, minutesToFull(stored), 0.1 * told);
}

TEST_F(TimeEstimateDayTest, ALowRateNearTheEndIsBelieved) {
    stored = 49'500;
    EXPECT_NEAR(number(begin(2'000).toFull), 15, 1);
}

TEST_F(TimeEstimateDayTest, AChargeThatBeginsWithABusyMomentPromisesNoWholeDay) {
    stored = 10'000;
    EXPECT_NEAR(number(begin(2'000).toFull), 298, 10); // at that rate, 20 hours
    // If it really is so slow, that is believed after an hour, bar a quarter.
    const double told = number(goMinutes(60, 4'000).toFull);
    const double truth = (50'000 - stored) / 4'000 * 60;
    EXPECT_NEAR(told, truth, 0.25 * truth);
}

TEST_F(TimeEstimateDayTest, AWeakChargerPromisesNoMoreThanItsMean) {
    stored = 15'000;
    begin(18'000);
    for (int i = 0; i < 5; ++i) {
        goMinutes(10, 18'000);
        // While the machine takes nearly all, today's rate alone would promise 15 hours and more.
        const double told = number(goMinutes(10, 2'000).toFull);
        EXPECT_LT(told, 2 * (50'000 - stored) / 10'000 * 60) << i;
        EXPECT_GT(told, 0) << i;
    }
}

TEST_F(TimeEstimateDayTest, HoursArePromisedByHours) {
    begin(-5'000);
    goMinutes(40, -5'000);
    goMinutes(40, -11'000);
    goMinutes(40, -5'000);
    // It has gone up and down, so the quarter of an hour before is no better guide than the hours before it.
    const double told = number(goMinutes(20, -11'000).toEmpty);
    EXPECT_NEAR(told, stored / 7'571 * 60, 0.15 * told); // at 11 W, a third less
}

TEST_F(TimeEstimateDayTest, WhatFlowedHoursAgoIsForgotten) {
    begin(-10'000);
    goMinutes(180, -10'000);
    const double told = number(goMinutes(60, -11'500).toEmpty);
    // Less than an hour is left, so the mean covers no more than two: 49 minutes if it covered all, 46 if one hour.
    EXPECT_NEAR(told, stored / 10'570 * 60, 0.8);
}

TEST_F(TimeEstimateDayTest, ALoadThatHasChangedForGoodIsBelieved) {
    begin(-7'000);
    goMinutes(120, -7'000);
    for (int minutes = 20; minutes <= 80; minutes += 10) {
        const double told = number(goMinutes(minutes == 20 ? 20 : 10, -15'000).toEmpty);
        EXPECT_NEAR(told, stored / 15'000 * 60, 3) << minutes;
    }
}

TEST_F(TimeEstimateDayTest, ARunBeginsWithWhatTheLastOneHasShown) {
    struct Row {
        const char* what;
        std::function<void(TimeEstimateDayTest&)> interrupt;
    };
    const Row rows[] = {
        {"a charge", [](auto& day) { day.goMinutes(5, 30'000); }},
        {"a sleep", [](auto& day) { day.slept += 3600; }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        estimate = TimeEstimate(1);
        stored = 50'000;
        workMinutes(40);
        row.interrupt(*this);
        // At a busy moment; that rate alone would promise two thirds of it.
        double told = number(begin(-20'000).toEmpty);
        EXPECT_NEAR(told, stored / 13'000 * 60, 0.05 * told);
        told = number(workMinutes(5).toEmpty);
        EXPECT_NEAR(told, stored / 13'000 * 60, 0.1 * told);
    }
}

TEST_F(TimeEstimateDayTest, WhatTheLastRunHasShownIsDroppedWhenItIsAnotherLoad) {
    goMinutes(40, -8'000);
    goMinutes(5, 30'000);
    double told = number(begin(-20'000).toEmpty);
    EXPECT_NEAR(told, stored / 20'000 * 60, 1);
    told = number(goMinutes(30, -20'000).toEmpty);
    EXPECT_NEAR(told, stored / 20'000 * 60, 1);
}

TEST_F(TimeEstimateDayTest, AnotherPackBeginsWithNothing) {
    workMinutes(40);
    goMinutes(5, 30'000);
    batteries = "BAT1/energy ";
    const double told = number(begin(-20'000).toEmpty);
    EXPECT_NEAR(told, stored / 20'000 * 60, 1);
}

TEST_F(TimeEstimateDayTest, AShortRunShowsLittle) {
    workMinutes(40);
    goMinutes(5, 30'000);
    goMinutes(5, -20'000);
    goMinutes(5, 30'000);
    const double told = number(begin(-20'000).toEmpty);
    EXPECT_NEAR(told, stored / 13'000 * 60, 0.06 * told);
}

TEST_F(TimeEstimateDayTest, AFullPackThatGoesOnChargingShowsNothing) {
    stored = 20'000;
    chargeMinutes(80);
    stored = 50'000;
    goMinutes(200, 600);
    goMinutes(5, -10'000);
    stored = 20'000;
    EXPECT_NEAR(number(begin(36'000).toFull), minutesToFull(20'000), 10);
}

TEST_F(TimeEstimateDayTest, AMachineThatReportsNoRateBeginsWithItsLastOne) {
    EXPECT_EQ(begin(-10'000, std::nullopt), unknown);
    for (int i = 0; i < 40; ++i)
        go(60, -10'000, std::nullopt);
    go(60, 30'000, std::nullopt);
    const double told = number(begin(-10'000, std::nullopt).toEmpty);
    EXPECT_NEAR(told, stored / 10'000 * 60, 2);
    // But not for ever, if nothing moves.
    go(1'000, 0, std::nullopt);
    EXPECT_EQ(go(60, 0, std::nullopt), unknown);
}

TEST_F(TimeEstimateDayTest, AChargeThatSlowsDownWillGoOn) {
    stored = 10'000;
    begin(20'000);
    goMinutes(40, 20'000);
    // The machine takes nearly all for a while; at that rate alone it would be 11 hours, and no run was ever like it.
    const double told = number(goMinutes(20, 2'000).toFull);
    EXPECT_LT(told, 150);
    EXPECT_GT(told, 60);
}

TEST_F(TimeEstimateDayTest, AChargeThatSpeedsUpIsBelieved) {
    stored = 5'000;
    begin(4'000);
    goMinutes(60, 4'000);
    const double told = number(goMinutes(20, 20'000).toFull);
    EXPECT_NEAR(told, (50'000 - stored) / 20'000 * 60 + 24, 10); // of them for the taper
}

TEST_F(TimeEstimateDayTest, WhatFirmwareHasReportedIsNoOtherLoad) {
    // Minutes of 6 and 20 W, and a sleep: either is as good a beginning.
    for (const double first : {-6'000.0, -20'000.0}) {
        estimate = TimeEstimate(1);
        stored = 50'000;
        workMinutes(40);
        slept += 3600;
        EXPECT_NEAR(number(begin(first).toEmpty), stored / 13'000 * 60, 15) << first;
    }
}

TEST_F(TimeEstimateDayTest, AnEarlierRunCountsLikeHalfAnHour) {
    begin(-10'000);
    goMinutes(120, -10'000);
    goMinutes(5, 30'000);
    begin(-12'000);
    const double told = number(goMinutes(60, -12'000).toEmpty);
    EXPECT_NEAR(told, stored / 11'390 * 60, 0.01 * told);
}

TEST_F(TimeEstimateDayTest, InAYoungRunOnlyAMuchHigherLoadIsNew) {
    begin(-5'000);
    goMinutes(12, -5'000);
    const double told = number(goMinutes(8, -12'000).toEmpty);
    EXPECT_NEAR(told, stored / 7'800 * 60, 0.1 * told);
    // After three hours, much less is new enough.
    goMinutes(180, -5'000);
    EXPECT_NEAR(number(goMinutes(8, -21'000).toEmpty), stored / 21'000 * 60, 2);
}

/// As it is told; the other tests look at the estimate itself.
struct TimeEstimateToldTest : TimeEstimateDayTest {
    TimeEstimateToldTest() { estimate = TimeEstimate(); }
};

TEST_F(TimeEstimateToldTest, RunsLikeAClockBetweenCoarseSteps) {
    // A step of 500 mWh every five minutes: 6 W, and 500 minutes.
    double last = 0;
    for (int minute = 0; minute < 120; ++minute) {
        stored = 50'000 - minute / 5 * 500;
        const double told = number(go(60, 0, -6'000).toEmpty);
        if (minute > 20) {
            EXPECT_NEAR(told, last - 1, 1) << minute; // not the same for five minutes and then five less
        }
        last = told;
    }
}

TEST_F(TimeEstimateToldTest, KeepsWithinATenthOfTheEstimate) {
    TimeEstimate itself{1};
    for (int minute = 0; minute < 120; ++minute) {
        const double rate = minute < 60 ? -10'000 : minute % 20 < 10 ? -25'000 : -4'000;
        const double told = number(goMinutes(1, rate).toEmpty);
        const double estimated = number(itself.update(lastReading).toEmpty);
        EXPECT_LE(told, estimated * 1.1 + 1) << minute;
        EXPECT_GE(told + 1, estimated / 1.1 - 1) << minute;
    }
}

TEST_F(TimeEstimateToldTest, ComesToTheEstimateWithinAQuarterOfWhatIsLeft) {
    estimate.update(draining(0, 50'000, 10'000));
    estimate.update(draining(15, 50'000, 10'000));
    // All at once there is 8 % less than the estimate said: 276 minutes.
    EXPECT_NEAR(number(estimate.update(draining(16, 46'000, 10'000)).toEmpty), 299, 1);
    EXPECT_NEAR(number(estimate.update(draining(16 + 276 * 15, 46'000, 10'000)).toEmpty), 276, 1);
}

} // namespace
