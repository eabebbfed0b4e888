// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Shape.h"

#include <string_view>

/// What the battery is doing.
enum class Meaning {
    Level, ///< on battery: a bar that is filled to the level
    Bolt,  ///< charging
    Plug,  ///< plugged in and not charging
    Full,  ///< plugged in and fully charged
};

inline constexpr Meaning meanings[] = {Meaning::Level, Meaning::Bolt, Meaning::Plug, Meaning::Full};

/// The word for the meaning in file names.
std::string_view meaningName(Meaning meaning);

/// The sign for the meaning, 20 wide and 6 high. The level is 0 to 100 percent.
Shape meaningShape(Meaning meaning, int percent);
