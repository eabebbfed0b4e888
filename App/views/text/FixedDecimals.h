// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <charconv>
#include <string>

/// The number with this many decimals, whatever the user's locale.
inline std::string fixed(double number, int decimals) {
    std::array<char, 512> digits{}; // the longest double has 309 before the point
    const auto result =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, decimals);
    return {digits.data(), result.ptr};
}
