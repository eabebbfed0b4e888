// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

/// What every preferences store must do. A `Backend` is made anew for each test, from an empty world, and has
///   std::unique_ptr<UserDefaults> open();   a store on the backend's one content; several may be open at a time
///   template <class Condition> bool waitUntil(Condition); runs the loop until it holds, false if it never does
///   void settle();                          runs the loop until all pending changes have arrived
///   void refuseWrites();                    from now on nothing can be written
template <class Backend>
class UserDefaultsContract : public ::testing::Test {
protected:
    Backend backend;
    std::unique_ptr<UserDefaults> store = backend.open();

    /// The store of a program that starts now.
    std::unique_ptr<UserDefaults> restarted() {
        backend.settle();
        return backend.open();
    }
};

TYPED_TEST_SUITE_P(UserDefaultsContract);

TYPED_TEST_P(UserDefaultsContract, AbsentKeysReadAsNothing) {
    EXPECT_FALSE(this->store->boolForKey("key"));
    EXPECT_EQ(this->store->integerForKey("key"), 0);
    EXPECT_EQ(this->store->doubleForKey("key"), 0.0);
    EXPECT_EQ(this->store->stringForKey("key"), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, AbsentKeysReadAsTheirFallback) {
    this->store->registerDefaults({{"flag", true}, {"whole", 80}, {"real", 2.5}, {"text", "default"}});
    EXPECT_TRUE(this->store->boolForKey("flag"));
    EXPECT_EQ(this->store->integerForKey("whole"), 80);
    EXPECT_EQ(this->store->doubleForKey("real"), 2.5);
    EXPECT_EQ(this->store->stringForKey("text"), "default");
}

TYPED_TEST_P(UserDefaultsContract, FallbacksAreNeverStored) {
    this->store->registerDefaults({{"flag", true}, {"whole", 80}, {"real", 2.5}, {"text", "default"}});
    this->store->setObject("other", 1);
    const auto next = this->restarted();
    EXPECT_EQ(next->integerForKey("other"), 1);
    EXPECT_FALSE(next->boolForKey("flag"));
    EXPECT_EQ(next->integerForKey("whole"), 0);
    EXPECT_EQ(next->doubleForKey("real"), 0.0);
    EXPECT_EQ(next->stringForKey("text"), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, LaterFallbacksJoinAndReplaceEarlierOnes) {
    this->store->registerDefaults({{"one", 1}, {"two", 2}});
    this->store->registerDefaults({{"two", 22}, {"three", 3}});
    EXPECT_EQ(this->store->integerForKey("one"), 1);
    EXPECT_EQ(this->store->integerForKey("two"), 22);
    EXPECT_EQ(this->store->integerForKey("three"), 3);
}

TYPED_TEST_P(UserDefaultsContract, StoredValuesWinOverFallbacksInEitherOrder) {
    this->store->registerDefaults({{"before", 80}});
    this->store->setObject("before", 60);
    this->store->setObject("after", 60);
    this->store->registerDefaults({{"before", 80}, {"after", 80}});
    EXPECT_EQ(this->store->integerForKey("before"), 60);
    EXPECT_EQ(this->store->integerForKey("after"), 60);
}

TYPED_TEST_P(UserDefaultsContract, StoredZeroFalseAndEmptyTextAreValuesToo) {
    this->store->registerDefaults({{"flag", true}, {"whole", 80}, {"real", 2.5}, {"text", "default"}});
    this->store->setObject("flag", false);
    this->store->setObject("whole", 0);
    this->store->setObject("real", 0.0);
    this->store->setObject("text", "");
    EXPECT_FALSE(this->store->boolForKey("flag"));
    EXPECT_EQ(this->store->integerForKey("whole"), 0);
    EXPECT_EQ(this->store->doubleForKey("real"), 0.0);
    EXPECT_EQ(this->store->stringForKey("text"), "");
}

TYPED_TEST_P(UserDefaultsContract, ValuesSurviveARestart) {
    this->store->setObject("flag", true);
    this->store->setObject("negative", -5);
    this->store->setObject("odd", std::int64_t{9'007'199'254'740'993});
    this->store->setObject("largest", std::numeric_limits<std::int64_t>::max());
    this->store->setObject("smallest", std::numeric_limits<std::int64_t>::min());
    this->store->setObject("real", 1'731'000'000.123456);
    this->store->setObject("text", "Glöckchen \"♪\" \\ \n");
    const auto next = this->restarted();
    EXPECT_TRUE(next->boolForKey("flag"));
    EXPECT_EQ(next->integerForKey("negative"), -5);
    EXPECT_EQ(next->integerForKey("odd"), 9'007'199'254'740'993);
    EXPECT_EQ(next->integerForKey("largest"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(next->integerForKey("smallest"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(next->doubleForKey("real"), 1'731'000'000.123456);
    EXPECT_EQ(next->stringForKey("text"), "Glöckchen \"♪\" \\ \n");
}

TYPED_TEST_P(UserDefaultsContract, ANewValueReplacesTheOldOneWhateverItsKind) {
    this->store->setObject("key", "text");
    this->store->setObject("key", 7);
    EXPECT_EQ(this->store->integerForKey("key"), 7);
    EXPECT_EQ(this->store->stringForKey("key"), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, KeysDifferInCase) {
    this->store->setObject("Limit", 60);
    EXPECT_EQ(this->store->integerForKey("limit"), 0);
}

TYPED_TEST_P(UserDefaultsContract, WholeRealsAreIntegersAndIntegersAreReals) {
    this->store->setObject("real", 80.0);
    this->store->setObject("whole", 80);
    EXPECT_EQ(this->store->integerForKey("real"), 80);
    EXPECT_EQ(this->store->doubleForKey("whole"), 80.0);
    const auto next = this->restarted();
    EXPECT_EQ(next->integerForKey("real"), 80);
    EXPECT_EQ(next->doubleForKey("whole"), 80.0);
}

TYPED_TEST_P(UserDefaultsContract, AValueOfAnotherKindCountsAsAbsent) {
    struct Row {
        const char* what;
        Value value;
        bool isBool, isInteger, isReal, isText;
    };
    const Row rows[] = {
        {"a flag", false, true, false, false, false},
        {"an integer", 1, false, true, true, false},
        {"a fraction", 80.5, false, false, true, false},
        {"beyond all integers", 1e300, false, false, true, false},
        {"a number as text", "80", false, false, false, true},
        {"a flag as text", "false", false, false, false, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        this->store->setObject("key", row.value);
        const auto read = this->restarted();
        read->registerDefaults({{"key", true}});
        for (UserDefaults* reader : {this->store.get(), read.get()}) {
            reader->registerDefaults({{"key", true}});
            EXPECT_EQ(reader->boolForKey("key"), !row.isBool);
            reader->registerDefaults({{"key", 55}});
            EXPECT_EQ(reader->integerForKey("key") == 55, !row.isInteger);
            EXPECT_EQ(reader->doubleForKey("key") == 55, !row.isReal);
            reader->registerDefaults({{"key", "fallback"}});
            EXPECT_EQ(reader->stringForKey("key") == "fallback", !row.isText);
        }
    }
}

TYPED_TEST_P(UserDefaultsContract, AFallbackOfAnotherKindReadsAsNothing) {
    this->store->registerDefaults({{"flag", true}, {"text", "80"}});
    EXPECT_EQ(this->store->integerForKey("flag"), 0);
    EXPECT_EQ(this->store->doubleForKey("text"), 0.0);
    EXPECT_FALSE(this->store->boolForKey("text"));
    EXPECT_EQ(this->store->stringForKey("flag"), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, OwnWritesAreAnnouncedOnALaterTurn) {
    int calls = 0;
    std::int64_t seen = 0;
    const Subscription subscription = this->store->onChange([&] {
        ++calls;
        seen = this->store->integerForKey("limit");
    });
    this->store->setObject("limit", 70);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(this->store->integerForKey("limit"), 70);
    EXPECT_TRUE(this->backend.waitUntil([&] { return calls > 0; }));
    EXPECT_EQ(seen, 70);
}

TYPED_TEST_P(UserDefaultsContract, WritesOfOthersAreSeenAndAnnounced) {
    int calls = 0;
    const Subscription subscription = this->store->onChange([&] { ++calls; });
    const auto other = this->backend.open();
    other->setObject("limit", 65);
    EXPECT_TRUE(this->backend.waitUntil([&] { return calls > 0; }));
    EXPECT_EQ(this->store->integerForKey("limit"), 65);
}

TYPED_TEST_P(UserDefaultsContract, WritesOfOthersAreKeptByOwnOnes) {
    const auto other = this->backend.open();
    other->setObject("theirs", 1);
    this->store->setObject("ours", 2);
    const auto next = this->restarted();
    EXPECT_EQ(next->integerForKey("theirs"), 1);
    EXPECT_EQ(next->integerForKey("ours"), 2);
}

// The program registers its fallbacks each time that it reads the preferences, even in the callback.
TYPED_TEST_P(UserDefaultsContract, ReadingAndRegisteringAnnounceNothing) {
    int calls = 0;
    const Subscription subscription = this->store->onChange([&] { ++calls; });
    this->store->registerDefaults({{"limit", 80}});
    EXPECT_EQ(this->store->integerForKey("limit"), 80);
    EXPECT_EQ(this->store->stringForKey("limit"), std::nullopt);
    this->backend.settle();
    EXPECT_EQ(calls, 0);
}

TYPED_TEST_P(UserDefaultsContract, NobodyIsToldAfterTheSubscriptionEnded) {
    int calls = 0;
    int others = 0;
    Subscription subscription = this->store->onChange([&] { ++calls; });
    const Subscription witness = this->store->onChange([&] { ++others; });
    this->store->setObject("limit", 70);
    subscription = Subscription();
    EXPECT_TRUE(this->backend.waitUntil([&] { return others > 0; }));
    EXPECT_EQ(calls, 0);
}

TYPED_TEST_P(UserDefaultsContract, AValueThatCannotBeWrittenHoldsForThisRun) {
    this->store->setObject("limit", 70);
    this->backend.settle();
    this->backend.refuseWrites();
    int calls = 0;
    const Subscription subscription = this->store->onChange([&] { ++calls; });
    this->store->setObject("limit", 60);
    EXPECT_TRUE(this->backend.waitUntil([&] { return calls > 0; }));
    EXPECT_EQ(this->store->integerForKey("limit"), 60);
    EXPECT_EQ(this->restarted()->integerForKey("limit"), 70);
}

REGISTER_TYPED_TEST_SUITE_P(UserDefaultsContract, AbsentKeysReadAsNothing, AbsentKeysReadAsTheirFallback,
                            FallbacksAreNeverStored, LaterFallbacksJoinAndReplaceEarlierOnes,
                            StoredValuesWinOverFallbacksInEitherOrder, StoredZeroFalseAndEmptyTextAreValuesToo,
                            ValuesSurviveARestart, ANewValueReplacesTheOldOneWhateverItsKind, KeysDifferInCase,
                            WholeRealsAreIntegersAndIntegersAreReals, AValueOfAnotherKindCountsAsAbsent,
                            AFallbackOfAnotherKindReadsAsNothing, OwnWritesAreAnnouncedOnALaterTurn,
                            WritesOfOthersAreSeenAndAnnounced, WritesOfOthersAreKeptByOwnOnes,
                            ReadingAndRegisteringAnnounceNothing, NobodyIsToldAfterTheSubscriptionEnded,
                            AValueThatCannotBeWrittenHoldsForThisRun);
