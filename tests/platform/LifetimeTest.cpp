// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Lifetime.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

namespace {

TEST(Lifetime, LetsCallbacksThroughWhileTheOwnerLives) {
    const Lifetime lifetime;
    int sum = 0;
    std::function<void(int)> callback = lifetime.guard([&](int number) { sum += number; });
    callback(2);
    callback(3);
    EXPECT_EQ(sum, 5);
}

TEST(Lifetime, SilencesCallbacksOnceTheOwnerIsGone) {
    std::optional<Lifetime> lifetime(std::in_place);
    int calls = 0;
    const std::function<void()> callback = lifetime->guard([&] { ++calls; });
    lifetime.reset();
    callback();
    EXPECT_EQ(calls, 0);
}

TEST(Lifetime, EndsForCopiesOfACallbackToo) {
    std::optional<Lifetime> lifetime(std::in_place);
    int calls = 0;
    const std::function<void()> callback = lifetime->guard([&] { ++calls; });
    const std::function<void()> copy = callback;
    copy();
    lifetime.reset();
    copy();
    EXPECT_EQ(calls, 1);
}

TEST(Lifetime, MayEndWhileTheCallbackRuns) {
    std::optional<Lifetime> lifetime(std::in_place);
    int calls = 0;
    const std::function<void()> callback = lifetime->guard([&] {
        lifetime.reset();
        ++calls;
    });
    callback();
    callback();
    EXPECT_EQ(calls, 1);
}

} // namespace
