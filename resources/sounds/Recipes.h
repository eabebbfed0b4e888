// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Voice.h"

#include <string_view>
#include <vector>

/// A sound and its ingredients.
struct Recipe {
    std::string_view name;
    double seconds;
    Voices voices;
};

/// The alert sounds, in the order of the settings.
std::vector<Recipe> recipes();
