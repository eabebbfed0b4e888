// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/LayerEdge.h"

#include <gtest/gtest.h>

namespace {

constexpr int screenStart = 1280;
constexpr int screenLength = 800;
constexpr int length = 300;

LayerEdge edge(int before) {
    return layerEdge(screenStart + before, length, screenStart, screenLength);
}

} // namespace

TEST(LayerEdge, IsThatOfAPanelThatTheWindowLiesBeside) {
    EXPECT_EQ(edge(22), (LayerEdge{.isAtEnd = false, .margin = 8}));
    EXPECT_EQ(edge(8), (LayerEdge{.isAtEnd = false, .margin = 8}));
    EXPECT_EQ(edge(screenLength - length - 22), (LayerEdge{.isAtEnd = true, .margin = 8}));
    EXPECT_EQ(edge(screenLength - length - 3), (LayerEdge{.isAtEnd = true, .margin = 3}));
}

TEST(LayerEdge, IsTheFirstElsewhereWithTheDistance) {
    EXPECT_EQ(edge(65), (LayerEdge{.isAtEnd = false, .margin = 65}));
    EXPECT_EQ(edge(screenLength - length - 65), (LayerEdge{.isAtEnd = false, .margin = 435}));
}

TEST(LayerEdge, OfAWindowThatFillsTheScreenIsTheFirst) {
    EXPECT_EQ(layerEdge(0, 800, 0, 800), LayerEdge{});
    EXPECT_EQ(layerEdge(-20, 840, 0, 800), LayerEdge{});
}
