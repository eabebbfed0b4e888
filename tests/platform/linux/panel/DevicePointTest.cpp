// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/DevicePoint.h"

#include <gtest/gtest.h>

#include <limits>

TEST(DevicePoint, IsTurnedIntoQtsPixels) {
    // Two screens side by side, 1920 by 1080 and 1800 by 1200 device pixels.
    const std::vector<ScreenArea> screens{{.x = 0, .y = 0, .width = 960, .height = 540, .scale = 2},
                                          {.x = 1920, .y = 100, .width = 1200, .height = 800, .scale = 1.5}};
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

TEST(DevicePoint, IsLeftAloneHoweverFarAway) {
    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    const std::vector<ScreenArea> screens{{.x = -1920, .y = -1080, .width = 1920, .height = 1080, .scale = 1},
                                          {.x = 1920, .y = 1080, .width = 960, .height = 540, .scale = 0.5}};
    for (const ScreenPoint point : {ScreenPoint{highest, highest}, {highest, 0}, {0, highest}, {lowest, lowest}})
        EXPECT_EQ(toLogical(point, screens), point) << point.x << ", " << point.y;
}
