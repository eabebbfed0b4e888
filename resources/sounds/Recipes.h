// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Voice.h"

#include <string_view>
#include <vector>

/// A sound and what it is made of.
struct Recipe {
    std::string_view name;
    double seconds;
    Voices voices;
};

/// The alert sounds, in the order in which they are offered.
std::vector<Recipe> recipes();
