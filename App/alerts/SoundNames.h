// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <string_view>

/// The sounds offered for a reminder besides "default" and "none", in this order. Each is stored in the preferences
/// under its name, and is a file of that name in the bundle.
inline constexpr std::array<std::string_view, 14> soundNames{"Glass", "Ping", "Hero",   "Submarine", "Funk",
                                                             "Basso", "Blow", "Bottle", "Frog",      "Morse",
                                                             "Pop",   "Purr", "Sosumi", "Tink"};
