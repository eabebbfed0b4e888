// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/text/PopoverPlacement.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr ScreenRect screen{.x = 100, .y = 50, .width = 1000, .height = 800};

ScreenPoint placed(ScreenPoint point, int width = 300, int height = 200) {
    return placePopover(point, screen, width, height);
}

TEST(PopoverPlacement, HangsBelowAPanelAtTheTop) {
    EXPECT_EQ(placed(ScreenPoint{600, 60}), (ScreenPoint{450, 68}));
}

TEST(PopoverPlacement, StandsAboveAPanelAtTheBottom) {
    EXPECT_EQ(placed(ScreenPoint{600, 840}), (ScreenPoint{450, 632}));
}

TEST(PopoverPlacement, ChangesSidesInTheMiddleOfTheScreen) {
    EXPECT_EQ(placed(ScreenPoint{600, 450}), (ScreenPoint{450, 458}));
    EXPECT_EQ(placed(ScreenPoint{600, 451}), (ScreenPoint{450, 243}));
}

TEST(PopoverPlacement, StaysOnTheScreen) {
    EXPECT_EQ(placed(ScreenPoint{110, 60}), (ScreenPoint{108, 68}));
    EXPECT_EQ(placed(ScreenPoint{1095, 60}), (ScreenPoint{792, 68}));
    EXPECT_EQ(placed(ScreenPoint{600, 20}), (ScreenPoint{450, 58}));
    EXPECT_EQ(placed(ScreenPoint{600, 2000}), (ScreenPoint{450, 642}));
    EXPECT_EQ(placed(ScreenPoint{-5000, 3000}), (ScreenPoint{108, 642}));
}

/// A panel of 40 pixels on one side of a screen, a click in its middle, and the place of the popover.
struct PanelCase {
    const char* name;
    ScreenRect whole;
    ScreenRect available;
    ScreenPoint point;
    ScreenPoint corner;
};

constexpr int width = 342;
constexpr int height = 600;

// One screen of 1920 by 1080 at the origin; one to the left of it and lower; one above it.
constexpr ScreenRect main{0, 0, 1920, 1080};
constexpr ScreenRect left{-1280, 200, 1280, 1024};
constexpr ScreenRect above{300, -900, 1600, 900};

const std::vector<PanelCase> panelCases{
    {"top", main, {0, 40, 1920, 1040}, {1200, 20}, {1029, 48}},
    {"top, at the right end", main, {0, 40, 1920, 1040}, {1910, 20}, {1570, 48}},
    {"top, at the left end", main, {0, 40, 1920, 1040}, {10, 20}, {8, 48}},
    {"bottom", main, {0, 0, 1920, 1040}, {1200, 1060}, {1029, 432}},
    {"bottom, at the right end", main, {0, 0, 1920, 1040}, {1910, 1060}, {1570, 432}},
    {"left", main, {40, 0, 1880, 1080}, {20, 540}, {48, 240}},
    {"left, at the upper end", main, {40, 0, 1880, 1080}, {20, 10}, {48, 8}},
    {"left, at the lower end", main, {40, 0, 1880, 1080}, {20, 1070}, {48, 472}},
    {"right", main, {0, 0, 1880, 1080}, {1900, 540}, {1530, 240}},
    {"right, at the upper end", main, {0, 0, 1880, 1080}, {1900, 10}, {1530, 8}},
    {"right, at the lower end", main, {0, 0, 1880, 1080}, {1900, 1070}, {1530, 472}},
    {"top of the left screen", left, {-1280, 240, 1280, 984}, {-100, 220}, {-350, 248}},
    {"bottom of the left screen", left, {-1280, 200, 1280, 984}, {-700, 1204}, {-871, 576}},
    {"left of the left screen", left, {-1240, 200, 1240, 1024}, {-1260, 700}, {-1232, 400}},
    {"right of the left screen", left, {-1280, 200, 1240, 1024}, {-20, 700}, {-390, 400}},
    {"top of the upper screen", above, {300, -860, 1600, 860}, {1880, -880}, {1550, -852}},
    {"bottom of the upper screen", above, {300, -900, 1600, 860}, {1000, -20}, {829, -648}},
};

TEST(PopoverPlacement, StandsBesideThePanelOnAnySideOfAnyScreen) {
    for (const PanelCase& each : panelCases)
        EXPECT_EQ(placePopover(each.point, each.available, width, height), each.corner) << each.name;
}

TEST(PopoverPlacement, NeverCoversThePointEvenWhereNobodyTellsOfThePanels) {
    for (const PanelCase& each : panelCases) {
        const auto [x, y] = placePopover(each.point, each.whole, width, height);
        const bool covers =
            each.point.x > x && each.point.x < x + width && each.point.y > y && each.point.y < y + height;
        EXPECT_FALSE(covers) << each.name;
        const ScreenRect& on = each.whole;
        EXPECT_TRUE(x >= on.x && y >= on.y && x + width <= on.x + on.width && y + height <= on.y + on.height)
            << each.name;
    }
}

TEST(PopoverPlacement, WithoutAPointGoesToTheRightCornerWherePanelsAre) {
    const auto usual = [](const ScreenRect& available) {
        return placePopover(usualPlaceOfItem(main, available), available, width, height);
    };
    const ScreenPoint top{1570, 48};
    EXPECT_EQ(usual({0, 40, 1920, 1040}), top);
    EXPECT_EQ(usual({0, 40, 1920, 1000}), top) << "two panels";
    EXPECT_EQ(usual({0, 0, 1920, 1040}), (ScreenPoint{1570, 432})) << "one at the bottom";
    EXPECT_EQ(usual(main), (ScreenPoint{1570, 8})) << "none, or nobody tells of them";
    EXPECT_EQ(usual({40, 0, 1880, 1080}), (ScreenPoint{1570, 8})) << "one at the left";
}

TEST(PopoverPlacement, StandsClearOfTheEdgesAsFarAsThereIsRoom) {
    EXPECT_EQ(placed(usualPlaceOfItem(screen, screen), 990, 794), (ScreenPoint{105, 53}));
    EXPECT_EQ(placed(usualPlaceOfItem(screen, screen), 1000, 800), (ScreenPoint{100, 50}));
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
    EXPECT_TRUE(isCredible({-20, 10}, true)) << "on a screen left of the first";
    EXPECT_TRUE(isCredible({10, -20}, true)) << "on a screen above it";
}

} // namespace
