// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/Published.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

struct PublishedTest : ::testing::Test {
    Published<std::string> value{"old"};
    std::vector<std::pair<std::string, std::string>> heard; ///< the announced value, and the value stored at that time

    Subscription listen() {
        return value.subscribe([this](const std::string& coming) { heard.emplace_back(coming, value.get()); });
    }
};

TEST_F(PublishedTest, TellsThePresentValueAtOnce) {
    const Subscription subscription = listen();
    EXPECT_EQ(heard, (std::vector<std::pair<std::string, std::string>>{{"old", "old"}}));
}

TEST_F(PublishedTest, AnnouncesAChangeBeforeItIsStored) {
    const Subscription subscription = listen();
    heard.clear();
    value.set("new");
    EXPECT_EQ(heard, (std::vector<std::pair<std::string, std::string>>{{"new", "old"}}));
    EXPECT_EQ(value.get(), "new");
}

TEST_F(PublishedTest, AnnouncesAnEqualValueToo) {
    const Subscription subscription = listen();
    heard.clear();
    value.set("old");
    EXPECT_EQ(heard.size(), 1U);
}

TEST_F(PublishedTest, IsSilentAfterTheSubscriptionEnded) {
    Subscription subscription = listen();
    subscription = Subscription();
    heard.clear();
    value.set("new");
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(value.get(), "new");
}

} // namespace
