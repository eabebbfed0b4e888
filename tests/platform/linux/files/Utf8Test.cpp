// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/Utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

TEST(Utf8, AcceptsWellFormedText) {
    const std::string_view texts[] = {
        "",
        "BAT0",
        std::string_view("\0", 1),
        "\x7F",
        "\xC2\x80",
        "\xDF\xBF",
        "\xE0\xA0\x80",
        "\xED\x9F\xBF",
        "\xEE\x80\x80",
        "\xEF\xBF\xBF",
        "\xF0\x90\x80\x80",
        "\xF4\x8F\xBF\xBF",
        "Akku \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x94\x8B end",
    };
    for (const std::string_view text : texts)
        EXPECT_TRUE(isUtf8(text)) << &text - texts;
}

TEST(Utf8, RejectsEverythingElse) {
    const std::string_view texts[] = {
        "\x80", // a continuation byte alone
        "\xBF",
        "\xC0\x80", // overlong
        "\xC1\xBF",
        "\xE0\x9F\xBF",
        "\xF0\x8F\xBF\xBF",
        "\xED\xA0\x80", // surrogates
        "\xED\xBF\xBF",
        "\xF4\x90\x80\x80", // beyond the last code point
        "\xF5\x80\x80\x80",
        "\xFE",
        "\xFF",
        "\xC3", // cut off
        "\xE2\x82",
        "\xF0\x9F\x94",
        std::string_view("\xC3\xA4", 1), // cut off, though the next byte in memory would complete it
        std::string_view("\xE2\x82\xAC", 2),
        "\xC3(", // no continuation byte
        "\xC3\xC3",
        "\xE2(\xA1",
        "\xE2\x82(",
        "\xF0\x9F\x94(",
        "Akku \xE4", // Latin-1
        "\xE4 Akku",
        "fine until \xC3\xA4\xFF",
    };
    for (const std::string_view text : texts)
        EXPECT_FALSE(isUtf8(text)) << &text - texts;
}

TEST(Utf8, KnowsEveryCodePoint) {
    for (unsigned code = 0; code < 0x120000; ++code) {
        std::string text;
        if (code < 0x80) {
            text = {static_cast<char>(code)};
        } else if (code < 0x800) {
            text = {static_cast<char>(0xC0U | (code >> 6U)), static_cast<char>(0x80U | (code & 0x3FU))};
        } else if (code < 0x10000) {
            text = {static_cast<char>(0xE0U | (code >> 12U)), static_cast<char>(0x80U | ((code >> 6U) & 0x3FU)),
                    static_cast<char>(0x80U | (code & 0x3FU))};
        } else {
            text = {static_cast<char>(0xF0U | (code >> 18U)), static_cast<char>(0x80U | ((code >> 12U) & 0x3FU)),
                    static_cast<char>(0x80U | ((code >> 6U) & 0x3FU)), static_cast<char>(0x80U | (code & 0x3FU))};
        }
        const bool isCodePoint = code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
        ASSERT_EQ(isUtf8(text), isCodePoint) << std::hex << code;
    }
}

} // namespace
