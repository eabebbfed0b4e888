// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ChargeTaper.h"

#include <gtest/gtest.h>

namespace {

/// Fills what is missing in small steps, at the share of the plateau that is taken at each.
double hoursStepByStep(const ChargeTaper& taper, double missing) {
    constexpr int steps = 100'000;
    double hours = 0;
    for (int i = 0; i < steps; ++i) {
        const double middle = missing * (i + 0.5) / steps;
        hours += missing / steps / (taper.plateau * taper.share(middle));
    }
    return hours;
}

TEST(ChargeTaper, TakesTheWholeRateUntilTheKnee) {
    const ChargeTaper taper{.plateau = 0.55, .slope = 2};
    EXPECT_EQ(taper.share(1), 1);
    EXPECT_EQ(taper.share(0.25), 1);
    EXPECT_NEAR(taper.share(0.125), 0.3 / 0.55, 1e-9);
    EXPECT_NEAR(taper.share(0), 0.05 / 0.55, 1e-9);
}

TEST(ChargeTaper, AFasterChargeTapersSooner) {
    EXPECT_EQ((ChargeTaper{.plateau = 0.25, .slope = 2}.share(0.15)), 1);
    EXPECT_LT((ChargeTaper{.plateau = 0.55, .slope = 2}.share(0.15)), 1);
}

TEST(ChargeTaper, EffortIsTheTimeThatTheStepsTakeTogether) {
    for (const double plateau : {0.06, 0.3, 0.7, 1.6}) {
        for (const double slope : {0.5, 2.7, 8.0}) {
            const ChargeTaper taper{.plateau = plateau, .slope = slope};
            for (const double missing : {0.01, 0.1, 0.3, 0.9})
                EXPECT_NEAR(taper.effort(missing) / plateau, hoursStepByStep(taper, missing), 1e-4)
                    << plateau << ' ' << slope << ' ' << missing;
        }
    }
}

TEST(ChargeTaper, AChargeAsSlowAsItsEndDoesNotTaper) {
    const ChargeTaper taper{.plateau = 0.05, .slope = 2};
    EXPECT_EQ(taper.share(0), 1);
    EXPECT_EQ(taper.effort(0.3), 0.3);
    const ChargeTaper none{.plateau = 0, .slope = 2};
    EXPECT_EQ(none.share(0.1), 1);
    EXPECT_EQ(none.effort(0.1), 0.1);
}

TEST(ChargeTaper, NothingIsMissingFromAPackThatIsMoreThanFull) {
    const ChargeTaper taper{.plateau = 0.5, .slope = 2};
    EXPECT_NEAR(taper.share(-0.02), 0.1, 1e-9);
    EXPECT_NEAR(taper.effort(-0.02), -0.02, 1e-9);
}

} // namespace
