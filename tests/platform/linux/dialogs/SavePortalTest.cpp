// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/SavePortal.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using Outcome = SaveAnswer::Outcome;

} // namespace

TEST(SavePortal, AFileIsChosen) {
    EXPECT_EQ(saveAnswer(0, "/home/me/a b.csv", 5s),
              (SaveAnswer{.outcome = Outcome::chosen, .file = "/home/me/a b.csv"}));
    EXPECT_EQ(saveAnswer(0, "/x.csv", 0s).file, "/x.csv") << "by a program, perhaps";
}

TEST(SavePortal, WhatIsNoFileCountsAsCancelled) {
    EXPECT_EQ(saveAnswer(0, {}, 5s), SaveAnswer{});
}

TEST(SavePortal, TheUserCancelsInMoreThanOneWay) {
    EXPECT_EQ(saveAnswer(1, {}, 5s), SaveAnswer{});
    EXPECT_EQ(saveAnswer(1, {}, 0s), SaveAnswer{});
    EXPECT_EQ(saveAnswer(1, "/x.csv", 5s), SaveAnswer{}) << "with the file that would have been it";
    EXPECT_EQ(saveAnswer(2, {}, 500ms), SaveAnswer{});
    EXPECT_EQ(saveAnswer(2, "/x.csv", 1h), SaveAnswer{});
}

TEST(SavePortal, ADialogThatIsOverAtOnceWasNone) {
    const SaveAnswer failed{.outcome = Outcome::failed, .file = {}};
    EXPECT_EQ(saveAnswer(2, {}, 0ms), failed);
    EXPECT_EQ(saveAnswer(2, {}, 499ms), failed);
    EXPECT_EQ(saveAnswer(7, "/x.csv", 0ms), failed);
}

TEST(SavePortal, KnowsWhereItsRequestIs) {
    EXPECT_EQ(portalRequestPath(":1.42", "velmora7"), "/org/freedesktop/portal/desktop/request/1_42/velmora7");
    EXPECT_EQ(portalRequestPath(":1.2.3", "t"), "/org/freedesktop/portal/desktop/request/1_2_3/t");
}

TEST(SavePortal, NamesAWindowOfX11AndNoOther) {
    EXPECT_EQ(portalParentWindow("xcb", 0x3a00007), "x11:3a00007");
    EXPECT_EQ(portalParentWindow("xcb", ~std::uint64_t(0)), "x11:ffffffffffffffff");
    EXPECT_EQ(portalParentWindow("xcb", 0), "");
    EXPECT_EQ(portalParentWindow("wayland", 7), "");
}
