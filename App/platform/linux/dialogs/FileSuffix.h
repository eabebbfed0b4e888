// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

/// The path of a file to save to, with the suffix where its name has none: "name" becomes "name.csv". A name that
/// begins with a point has none by that, and an empty suffix is not added.
std::string withSuffix(std::string file, std::string_view suffix);
