// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/SampleList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace {

std::vector<Sample> contentOf(const SampleList& list) {
    return {list.begin(), list.end()};
}

TEST(SampleList, GivesBackWhatItGot) {
    constexpr std::int64_t edge = std::int64_t{1} << 60;
    using Limits = std::numeric_limits<std::int64_t>;
    std::vector<Sample> samples;
    for (const std::int64_t p : {std::int64_t{0}, std::int64_t{100}, std::int64_t{-7}, edge - 1, edge, edge + 1, -edge,
                                 -edge - 1, Limits::max(), Limits::min()})
        for (const bool c : {false, true})
            for (const bool a : {false, true})
                samples.push_back({.t = 1731650000.25 + static_cast<double>(samples.size()), .p = p, .c = c, .a = a});
    SampleList list;
    for (const Sample& sample : samples)
        list.push_back(sample);
    EXPECT_EQ(contentOf(list), samples);
    EXPECT_EQ(list.front(), samples.front());
    EXPECT_EQ(list.back(), samples.back());
    list.dropFirst(33); // the first of them whose percentage is large
    samples.erase(samples.begin(), samples.begin() + 33);
    EXPECT_EQ(contentOf(list), samples);
}

TEST(SampleList, DropsTheOldestOfManyOneByOne) {
    SampleList list;
    for (int i = 0; i < 1000; ++i)
        list.push_back({.t = i * 60.0, .p = i % 100});
    for (int i = 1; i <= 500; ++i) {
        list.dropFirst(1);
        list.push_back({.t = (999 + i) * 60.0, .p = i % 100});
        ASSERT_EQ(list.size(), 1000U);
        ASSERT_EQ(list.front(), (Sample{.t = i * 60.0, .p = i % 100}));
        ASSERT_EQ(list.firstNotBefore(Date(Duration(i * 60.0 + 1))), 1U);
    }
    EXPECT_EQ(list.firstNotBefore(list.back().date()), 999U);
    EXPECT_EQ(list.firstNotBefore(list.back().date() + Duration(1)), 1000U);
    list.dropFirst(1000);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list, SampleList());
}

TEST(SampleList, FindsTheFirstThatIsLateEnoughInAnyOrder) {
    std::mt19937 dice; // NOLINT(cert-msc51-cpp): the same each time
    const auto below = [&dice](unsigned count) { return static_cast<int>(dice() % count); };
    for (int round = 0; round < 300; ++round) {
        SampleList list;
        double t = 0;
        for (int i = 0; i < 40; ++i) {
            t += below(20) == 0 ? -below(30) : below(3);
            list.push_back({.t = below(100) == 0 ? std::numeric_limits<double>::quiet_NaN() : t});
            if (below(15) == 0)
                list.dropFirst(static_cast<std::size_t>(below(static_cast<unsigned>(list.size()) + 1)));
            if (below(60) == 0 && std::ranges::none_of(list, [](const Sample& sample) { return std::isnan(sample.t); }))
                list.sort();
            const Date asked(Duration(t + below(9) - 6));
            const auto found = std::ranges::find_if(list, [&](const Sample& sample) { return sample.date() >= asked; });
            ASSERT_EQ(list.firstNotBefore(asked), static_cast<std::size_t>(std::ranges::distance(list.begin(), found)));
        }
    }
}

TEST(SampleList, SortsByTimeAndKeepsTheOrderOfOneTime) {
    constexpr std::int64_t large = std::numeric_limits<std::int64_t>::max();
    SampleList list{{.t = 9, .p = 1}, {.t = 3, .p = 2}, {.t = 1, .p = large}, {.t = 3, .p = 3}, {.t = 1, .p = 4}};
    list.dropFirst(1);
    list.sort();
    EXPECT_EQ(list, (SampleList{{.t = 1, .p = large}, {.t = 1, .p = 4}, {.t = 3, .p = 2}, {.t = 3, .p = 3}}));
}

TEST(SampleList, TellsListsApart) {
    const Sample one{.t = 60, .p = 80, .c = true, .a = true};
    Sample other = one;
    other.c = false;
    EXPECT_EQ(SampleList{one}, SampleList{one});
    EXPECT_NE(SampleList{one}, SampleList{other});
    EXPECT_NE(SampleList{one}, (SampleList{one, one}));
    EXPECT_NE(SampleList{one}, SampleList());
}

} // namespace
