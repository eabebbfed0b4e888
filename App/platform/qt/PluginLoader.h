// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

/// The executable that this process runs; empty where the system does not tell.
std::filesystem::path runningExecutable();

/// The folder whose "share" and "lib" belong to an executable: two above it, in every kind of bundle and in a build
/// folder.
std::filesystem::path prefixOf(const std::filesystem::path& executable);

/// A file that is installed with this program, by its path below the prefix: "share/icons". In the build folder it is
/// at the same place, so that tests find it too.
std::filesystem::path programFile(const std::filesystem::path& belowPrefix);

/// A function of one of our plugins, such as "velmora-chart", which is loaded for it and stays. Null when the plugin is
/// missing, as in half a bundle, or has been replaced by that of another version while we ran: its first use may be
/// weeks after the start. From any thread.
void* pluginFunction(const char* plugin, const char* function);
