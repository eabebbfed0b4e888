// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

/// Who may read a file: its owner only, or whoever might before and, if it is new, whom the user's files are open to.
enum class Access { owner, asUsual };

/// Writes a temporary file beside `target` and puts it in the place of `target`. When that fails, whatever was there is
/// untouched and the temporary file is gone; when there is no error, all of it is on the disk. The one error that comes
/// after the change is that of a folder which cannot be written to the disk.
[[nodiscard]] std::error_code writeAtomically(const std::filesystem::path& target, std::string_view content,
                                              Access access);

/// Removes the temporary files that a crash while `target` was written has left beside it: regular files of the user's
/// with a name of just that kind. What another process is writing at this moment stays.
void removeLeftovers(const std::filesystem::path& target);
