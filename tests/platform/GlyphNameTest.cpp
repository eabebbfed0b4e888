// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/GlyphName.h"

#include <gtest/gtest.h>

namespace {

TEST(GlyphName, IsNamedAfterItsSymbol) {
    EXPECT_EQ(glyphIconName("battery.0"), "velmora-battery-0-symbolic");
    EXPECT_EQ(glyphIconName("battery.100percent"), "velmora-battery-100percent-symbolic");
    EXPECT_EQ(glyphIconName("battery.100.bolt"), "velmora-battery-100-bolt-symbolic");
    EXPECT_EQ(glyphIconName("powerplug"), "velmora-powerplug-symbolic");
}

} // namespace
