// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Observers.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

struct ObserversTest : ::testing::Test {
    Observers<int> observers;
    std::string order;
};

TEST_F(ObserversTest, AreCalledInTheOrderInWhichTheySubscribed) {
    const Subscription first = observers.add([&](int number) { order += "a" + std::to_string(number); });
    const Subscription second = observers.add([&](int number) { order += "b" + std::to_string(number); });
    observers.notify(1);
    observers.notify(2);
    EXPECT_EQ(order, "a1b1a2b2");
}

TEST_F(ObserversTest, AreNotCalledAfterTheirSubscriptionEnded) {
    std::optional<Subscription> first = observers.add([&](int) { order += 'a'; });
    const Subscription second = observers.add([&](int) { order += 'b'; });
    first.reset();
    observers.notify(0);
    EXPECT_EQ(order, "b");
}

TEST_F(ObserversTest, CanEndASubscriptionThatWasAboutToBeCalled) {
    std::optional<Subscription> second;
    const Subscription first = observers.add([&](int) {
        order += 'a';
        second.reset();
    });
    second = observers.add([&](int) { order += 'b'; });
    observers.notify(0);
    EXPECT_EQ(order, "a");
}

TEST_F(ObserversTest, CanEndTheirOwnSubscriptionWhileTheyAreCalled) {
    std::optional<Subscription> own;
    const auto kept = std::make_shared<std::string>("kept");
    own = observers.add([&own, this, kept](int) {
        own.reset();
        order += *kept; // what the callback captured must still be alive
    });
    observers.notify(0);
    observers.notify(0);
    EXPECT_EQ(order, "kept");
}

TEST_F(ObserversTest, CanEndAnEarlierSubscriptionWithoutALaterOneMissingTheCall) {
    std::optional<Subscription> first = observers.add([&](int) { order += 'a'; });
    const Subscription second = observers.add([&](int) {
        order += 'b';
        first.reset();
    });
    const Subscription third = observers.add([&](int) { order += 'c'; });
    observers.notify(0);
    EXPECT_EQ(order, "abc");
}

TEST_F(ObserversTest, ThatSubscribeDuringACallAreCalledFromTheNextTimeOn) {
    std::vector<Subscription> later;
    const Subscription first = observers.add([&](int) {
        order += 'a';
        if (later.empty())
            later.push_back(observers.add([&](int) { order += 'b'; }));
    });
    observers.notify(0);
    EXPECT_EQ(order, "a");
    observers.notify(0);
    EXPECT_EQ(order, "aab");
}

TEST(Observers, MayGoBeforeASubscriptionDoes) {
    auto observers = std::make_unique<Observers<>>();
    const auto held = std::make_shared<int>(0);
    std::optional<Subscription> subscription = observers->add([held] {});
    observers.reset();
    subscription.reset();
    EXPECT_EQ(held.use_count(), 1);
}

TEST(Observers, ReleaseACallbackWhenItsSubscriptionEnds) {
    Observers<> observers;
    const auto held = std::make_shared<int>(0);
    std::optional<Subscription> subscription = observers.add([held] {});
    EXPECT_EQ(held.use_count(), 2);
    subscription.reset();
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
