// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/AsciiLower.h"

#include <gtest/gtest.h>

#include <string>

TEST(AsciiLower, ChangesTheLettersFromAToZAndNothingElse) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const auto letter = std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZ").find(text);
        EXPECT_EQ(asciiLower(text),
                  letter == std::string::npos ? text : std::string("abcdefghijklmnopqrstuvwxyz").substr(letter, 1))
            << byte;
    }
    EXPECT_EQ(asciiLower(""), "");
    EXPECT_EQ(asciiLower("\xC3\x84kku BAT0"), "\xC3\x84kku bat0");
}
