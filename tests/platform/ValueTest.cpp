// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Value.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>

namespace {

constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
constexpr auto largest = std::numeric_limits<std::int64_t>::max();

TEST(Value, GivesOnlyTheKindThatItHolds) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    struct Row {
        Value value;
        std::optional<bool> boolean;
        std::optional<double> number;
        std::optional<std::int64_t> integer;
    };
    const Row rows[] = {
        {"text", {}, {}, {}},
        {"80", {}, {}, {}},
        {Dictionary{{"a", 1}}, {}, {}, {}},
        {true, true, {}, {}},
        {false, false, {}, {}},
        {0, {}, 0.0, 0},
        {-5, {}, -5.0, -5},
        {80U, {}, 80.0, 80},
        {smallest, {}, -9223372036854775808.0, smallest},
        {largest, {}, 9223372036854775808.0, largest},
        {80.0, {}, 80.0, 80},
        {80.9, {}, 80.9, 80},
        {-80.9, {}, -80.9, -80},
        {-9223372036854775808.0, {}, -9223372036854775808.0, smallest},
        {9223372036854774784.0, {}, 9223372036854774784.0, 9223372036854774784},
        {9223372036854775808.0, {}, 9223372036854775808.0, {}},
        {-9223372036854777856.0, {}, -9223372036854777856.0, {}},
        {1e300, {}, 1e300, {}},
        {nan, {}, {}, {}},
        {infinity, {}, {}, {}},
        {-infinity, {}, {}, {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.value.boolean(), row.boolean) << &row - rows;
        EXPECT_EQ(row.value.number(), row.number) << &row - rows;
        EXPECT_EQ(row.value.integer(), row.integer) << &row - rows;
    }
}

TEST(Value, GivesTextAndDictionariesByReference) {
    const Value text("Cell");
    ASSERT_NE(text.text(), nullptr);
    EXPECT_EQ(*text.text(), "Cell");
    EXPECT_EQ(text.dictionary(), nullptr);
    const Value dictionary(Dictionary{{"a", 1}});
    ASSERT_NE(dictionary.dictionary(), nullptr);
    EXPECT_EQ(dictionary.dictionary()->size(), 1U);
    EXPECT_EQ(dictionary.text(), nullptr);
    EXPECT_EQ(Value(1).text(), nullptr);
    EXPECT_EQ(Value(true).dictionary(), nullptr);
}

TEST(Value, KeepsKindsApartInComparisons) {
    EXPECT_EQ(Value(1), Value(1));
    EXPECT_NE(Value(1), Value(2));
    EXPECT_NE(Value(1), Value(true));
    EXPECT_NE(Value(1), Value(1.0));
    EXPECT_NE(Value("1"), Value(1));
}

TEST(Value, IsFoundByItsKey) {
    const Dictionary dictionary{{"key", 1}};
    ASSERT_NE(find(dictionary, "key"), nullptr);
    EXPECT_EQ(*find(dictionary, "key"), Value(1));
    EXPECT_EQ(find(dictionary, "Key"), nullptr);
    EXPECT_EQ(find(Dictionary(), "key"), nullptr);
}

} // namespace
