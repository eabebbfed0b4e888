// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Shape.h"

#include <string_view>

/// What the battery is doing.
enum class Meaning {
    Level, ///< on battery
    Bolt,  ///< charging
    Plug,  ///< plugged in and not charging
    Full,  ///< plugged in and fully charged
};

inline constexpr Meaning meanings[] = {Meaning::Level, Meaning::Bolt, Meaning::Plug, Meaning::Full};

/// The word for the meaning in file names.
std::string_view meaningName(Meaning meaning);

/// A battery that is filled to the level, 0 to 100 percent, and a sign for the meaning beside it: a bolt, a plug, a
/// tick, an exclamation mark if it is on battery and low. 20 wide and 8 high.
Shape meaningShape(Meaning meaning, int percent);
