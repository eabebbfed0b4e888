// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Subscription.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace {

TEST(Subscription, EndsOnceWhenTheHandleGoes) {
    int ends = 0;
    {
        const Subscription subscription([&] { ++ends; });
        EXPECT_EQ(ends, 0);
    }
    EXPECT_EQ(ends, 1);
}

TEST(Subscription, IsPassedOnWithoutEnding) {
    int ends = 0;
    {
        Subscription outer;
        {
            Subscription inner([&] { ++ends; });
            Subscription moved(std::move(inner));
            outer = std::move(moved);
        }
        EXPECT_EQ(ends, 0);
    }
    EXPECT_EQ(ends, 1);
}

TEST(Subscription, EndsWhenTheHandleIsReplaced) {
    int ends = 0;
    Subscription subscription([&] { ++ends; });
    subscription = Subscription();
    EXPECT_EQ(ends, 1);
}

TEST(Subscription, EndsAtOnceWhenAnotherTakesItsPlace) {
    int ends = 0;
    Subscription subscription([&] { ++ends; });
    Subscription next([] {});
    subscription = std::move(next);
    EXPECT_EQ(ends, 1);
}

TEST(Subscription, CannotBeCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<Subscription>);
    EXPECT_FALSE(std::is_copy_assignable_v<Subscription>);
}

} // namespace
