// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LoginItem.h"

#include <gtest/gtest.h>

/// What every login item must do. A `Backend` is made anew for each test, from an empty world, and has
///   LoginItem& item();
///   void desktopSwitches(bool on);   switches it as the desktop's own list of autostarted programs does
///   void refuseWrites();             from now on nothing can be changed
template <class Backend>
class LoginItemContract : public ::testing::Test {
protected:
    Backend backend;
    LoginItem& item = backend.item();
};

TYPED_TEST_SUITE_P(LoginItemContract);

TYPED_TEST_P(LoginItemContract, IsOffUntilItIsRegistered) {
    EXPECT_FALSE(this->item.isEnabled());
    EXPECT_EQ(this->item.registerItem(), std::nullopt);
    EXPECT_TRUE(this->item.isEnabled());
    EXPECT_EQ(this->item.unregisterItem(), std::nullopt);
    EXPECT_FALSE(this->item.isEnabled());
}

TYPED_TEST_P(LoginItemContract, MayBeToldTwice) {
    EXPECT_EQ(this->item.unregisterItem(), std::nullopt);
    EXPECT_FALSE(this->item.isEnabled());
    EXPECT_EQ(this->item.registerItem(), std::nullopt);
    EXPECT_EQ(this->item.registerItem(), std::nullopt);
    EXPECT_TRUE(this->item.isEnabled());
    EXPECT_EQ(this->item.unregisterItem(), std::nullopt);
    EXPECT_EQ(this->item.unregisterItem(), std::nullopt);
    EXPECT_FALSE(this->item.isEnabled());
}

TYPED_TEST_P(LoginItemContract, SeesWhatTheDesktopSwitchesAndSwitchesItBack) {
    ASSERT_EQ(this->item.registerItem(), std::nullopt);
    this->backend.desktopSwitches(false);
    EXPECT_FALSE(this->item.isEnabled());
    this->backend.desktopSwitches(true);
    EXPECT_TRUE(this->item.isEnabled());
    this->backend.desktopSwitches(false);
    EXPECT_EQ(this->item.registerItem(), std::nullopt);
    EXPECT_TRUE(this->item.isEnabled());
}

TYPED_TEST_P(LoginItemContract, TellsWhyItCannotBeRegistered) {
    this->backend.refuseWrites();
    EXPECT_NE(this->item.registerItem().value_or(""), "");
    EXPECT_FALSE(this->item.isEnabled());
}

TYPED_TEST_P(LoginItemContract, TellsWhyItCannotBeUnregistered) {
    ASSERT_EQ(this->item.registerItem(), std::nullopt);
    this->backend.refuseWrites();
    EXPECT_NE(this->item.unregisterItem().value_or(""), "");
    EXPECT_TRUE(this->item.isEnabled());
}

TYPED_TEST_P(LoginItemContract, HasNothingToSayWhereThereIsNothingToDo) {
    this->backend.refuseWrites();
    EXPECT_EQ(this->item.unregisterItem(), std::nullopt);
}

REGISTER_TYPED_TEST_SUITE_P(LoginItemContract, IsOffUntilItIsRegistered, MayBeToldTwice,
                            SeesWhatTheDesktopSwitchesAndSwitchesItBack, TellsWhyItCannotBeRegistered,
                            TellsWhyItCannotBeUnregistered, HasNothingToSayWhereThereIsNothingToDo);
