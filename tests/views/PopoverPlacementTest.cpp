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

TEST(PopoverPlacement, APanelsPointIsTurnedIntoTheToolkitsPixels) {
    // Two screens side by side, 1920 by 1080 and 1800 by 1200 device pixels.
    const std::vector<ScreenArea> screens{{.whole = {.x = 0, .y = 0, .width = 960, .height = 540}, .scale = 2},
                                          {.whole = {.x = 1920, .y = 100, .width = 1200, .height = 800}, .scale = 1.5}};
    struct Row {
        ScreenPoint point;
        ScreenPoint logical;
    };
    const Row rows[] = {
        {{0, 0}, {0, 0}},           {{1000, 21}, {500, 10}},     {{1919, 1079}, {959, 539}}, {{1920, 100}, {1920, 100}},
        {{2220, 250}, {2120, 200}}, {{3719, 1299}, {3119, 899}}, {{3720, 200}, {3720, 200}}, {{100, 1080}, {100, 1080}},
        {{2000, 99}, {2000, 99}},   {{-1, 10}, {-1, 10}},        {{10, -1}, {10, -1}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(toLogical(row.point, screens), row.logical) << row.point.x << ", " << row.point.y;
    EXPECT_EQ(toLogical({1000, 20}, {}), (ScreenPoint{1000, 20}));
}

TEST(PopoverPlacement, TheToolkitsPointIsTurnedIntoDevicePixels) {
    const std::vector<ScreenArea> screens{{.whole = {.x = 0, .y = 0, .width = 960, .height = 540}, .scale = 2},
                                          {.whole = {.x = 1920, .y = 100, .width = 1200, .height = 800}, .scale = 1.5}};
    EXPECT_EQ(toDevice({500, 10}, screens), (ScreenPoint{1000, 20}));
    EXPECT_EQ(toDevice({2120, 200}, screens), (ScreenPoint{2220, 250}));
    EXPECT_EQ(toDevice({1000, 10}, screens), (ScreenPoint{1000, 10}));
    EXPECT_EQ(toDevice({500, 10}, {}), (ScreenPoint{500, 10}));
}

TEST(PopoverPlacement, APointInTheCornerIsDistrustedUnderWaylandOnly) {
    EXPECT_TRUE(isCredible({0, 0}, false));
    EXPECT_FALSE(isCredible({0, 0}, true));
    EXPECT_FALSE(isCredible({47, 47}, true));
    EXPECT_TRUE(isCredible({48, 0}, true));
    EXPECT_TRUE(isCredible({0, 48}, true));
}

} // namespace
