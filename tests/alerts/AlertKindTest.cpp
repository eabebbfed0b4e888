// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/AlertKind.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

TEST(AlertKind, NamesItsCasesInOrder) {
    std::vector<std::string_view> names;
    for (const AlertKind kind : allAlertKinds)
        names.push_back(rawValue(kind));
    EXPECT_EQ(names, (std::vector<std::string_view>{"chargeLimit", "low", "tooLong", "health", "lowPower"}));
}

TEST(AlertKind, IsFoundByItsName) {
    for (const AlertKind kind : allAlertKinds)
        EXPECT_EQ(alertKind(rawValue(kind)), kind);
    for (const char* name : {"", "Low", "low ", "lowpower", "limit", "chargeLimitt"})
        EXPECT_EQ(alertKind(name), std::nullopt) << name;
}

TEST(AlertKind, ServesAsAnElementOfASet) {
    EXPECT_EQ(std::set<AlertKind>(allAlertKinds.begin(), allAlertKinds.end()).size(), 5U);
}

} // namespace
