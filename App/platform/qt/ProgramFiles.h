// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

/// The path of this process's executable; empty if the system does not say.
std::filesystem::path runningExecutable();

/// The folder whose "share" and "lib" belong to an executable: two levels above it, in every kind of bundle and in a
/// build folder.
std::filesystem::path prefixOf(const std::filesystem::path& executable);

/// A file that is installed with this program, by its path below the prefix: "share/icons". In the build folder it is
/// at the same place, so that tests find it too.
std::filesystem::path programFile(const std::filesystem::path& belowPrefix);
