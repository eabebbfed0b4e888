// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

/// Who may read a file: only its owner, or whoever could read it before (for a new file, what the umask allows).
enum class Access { owner, asUsual };

/// Writes a temporary file beside `target` and renames it to `target`. On failure `target` is untouched and the
/// temporary file is gone; without an error all of it is on the disk. Only one error can come after the rename: that
/// the folder could not be synced.
[[nodiscard]] std::error_code writeAtomically(const std::filesystem::path& target, std::string_view content,
                                              Access access);

/// Removes the temporary files that a crash left beside `target`: regular files that belong to the user and have
/// exactly such a name. A file that another process is writing right now stays.
void removeLeftovers(const std::filesystem::path& target);
