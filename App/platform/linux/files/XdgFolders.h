// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <vector>

/// The user's folders by the XDG base directory specification; relative values of the variables are ignored, as it
/// asks.
std::filesystem::path xdgDataHome();
std::filesystem::path xdgConfigHome();
std::filesystem::path xdgStateHome();

/// The system's folders for configuration, by rank.
std::vector<std::filesystem::path> xdgConfigFolders();
