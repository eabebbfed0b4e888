// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/PopoverPlacement.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace {

constexpr ScreenRect screen{.x = 100, .y = 50, .width = 1000, .height = 800};

ScreenPoint placed(std::optional<ScreenPoint> point, int width = 300, int height = 200) {
    return placePopover(point, screen, width, height);
}

TEST(PopoverPlacement, HangsBelowAPanelAtTheTop) {
    EXPECT_EQ(placed(ScreenPoint{600, 60}), (ScreenPoint{450, 60}));
}

TEST(PopoverPlacement, StandsAboveAPanelAtTheBottom) {
    EXPECT_EQ(placed(ScreenPoint{600, 840}), (ScreenPoint{450, 640}));
}

TEST(PopoverPlacement, ChangesSidesInTheMiddleOfTheScreen) {
    EXPECT_EQ(placed(ScreenPoint{600, 450}), (ScreenPoint{450, 450}));
    EXPECT_EQ(placed(ScreenPoint{600, 451}), (ScreenPoint{450, 251}));
}

TEST(PopoverPlacement, StaysOnTheScreen) {
    EXPECT_EQ(placed(ScreenPoint{110, 60}), (ScreenPoint{100, 60}));
    EXPECT_EQ(placed(ScreenPoint{1095, 60}), (ScreenPoint{800, 60}));
    EXPECT_EQ(placed(ScreenPoint{600, 20}), (ScreenPoint{450, 50}));
    EXPECT_EQ(placed(ScreenPoint{600, 2000}), (ScreenPoint{450, 650}));
    EXPECT_EQ(placed(ScreenPoint{-5000, 3000}), (ScreenPoint{100, 650}));
}

TEST(PopoverPlacement, GoesToTheTopRightCornerWithoutAPoint) {
    EXPECT_EQ(placed(std::nullopt), (ScreenPoint{800, 50}));
}

TEST(PopoverPlacement, ShowsTheBeginningOfAPopoverThatIsLargerThanTheScreen) {
    EXPECT_EQ(placed(ScreenPoint{600, 60}, 2000, 2000), (ScreenPoint{100, 50}));
    EXPECT_EQ(placed(ScreenPoint{600, 840}, 2000, 2000), (ScreenPoint{100, 50}));
}

TEST(PopoverPlacement, APointInTheCornerIsDistrustedUnderWaylandOnly) {
    EXPECT_TRUE(isCredible({0, 0}, false));
    EXPECT_FALSE(isCredible({0, 0}, true));
    EXPECT_FALSE(isCredible({47, 47}, true));
    EXPECT_TRUE(isCredible({48, 0}, true));
    EXPECT_TRUE(isCredible({0, 48}, true));
}

} // namespace
