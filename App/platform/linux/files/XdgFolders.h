// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <vector>

/// The user's folders by the XDG Base Directory Specification, which asks to ignore relative values of its variables.
std::filesystem::path xdgDataHome();
std::filesystem::path xdgConfigHome();
std::filesystem::path xdgStateHome();

/// The system's configuration folders, most important first.
std::vector<std::filesystem::path> xdgConfigFolders();
