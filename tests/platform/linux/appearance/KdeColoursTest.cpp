// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/KdeColours.h"

#include "support/BreezeDark.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// As Plasma 5.27 writes Breeze Dark, shortened.
const std::string file = R"([Colors:Button]
BackgroundAlternate=30,87,116
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252

[Colors:Header][Inactive]
BackgroundNormal=1,1,1

[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=253,253,253

[Colors:View]
BackgroundNormal=27,30,32
ForegroundNormal=251,251,251

[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=250,250,250

[General]
ColorScheme=BreezeDark
)";

std::string without(std::string text, const std::string& part, const std::string& instead = "") {
    return text.replace(text.find(part), part.size(), instead);
}

} // namespace

TEST(KdeColours, AreThoseOfTheFile) {
    EXPECT_EQ(kdeColours(file), breezeDark);
}

TEST(KdeColours, AreNoneIfOneIsMissingOrNoColour) {
    EXPECT_EQ(kdeColours(""), std::nullopt);
    EXPECT_EQ(kdeColours(without(file, "ForegroundNormal=250,250,250")), std::nullopt);
    EXPECT_EQ(kdeColours(without(file, "[Colors:View]")), std::nullopt);
    for (const char* broken : {"42,46", "42,46,50,60", "256,46,50", "-1,46,50", "42, 46,50", "42,46,", "#2a2e32", ""})
        EXPECT_EQ(kdeColours(without(file, "42,46,50", broken)), std::nullopt) << broken;
}
