// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>

/// Who may read a file: only its owner, or whoever could read it before (for a new file, what the umask allows).
enum class Access { owner, asUsual };

/// Whether a write waits until it is on the disk.
enum class Sync { wait, skip };

/// Renames a finished temporary file, of which the descriptor is still open.
using Rename = std::function<std::error_code(int descriptor, const char* from, const char* to)>;
std::error_code renameFile(int descriptor, const char* from, const char* to);

/// Writes a temporary file beside `target` and renames it to `target`. On failure `target` is untouched and the
/// temporary file is gone; without an error all of it is on the disk, if that is waited for. Only one error can come
/// after the rename: that the folder could not be synced.
[[nodiscard]] std::error_code writeAtomically(const std::filesystem::path& target, std::string_view content,
                                              Access access, Sync sync = Sync::wait, const Rename& rename = renameFile);

/// Removes the temporary files that a crash left beside `target`: regular files that belong to the user and have
/// exactly such a name. A file that another process is writing right now stays.
void removeLeftovers(const std::filesystem::path& target);
