// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

/// The user's files. All calls are synchronous and silent: failure is the return value.
class Files {
public:
    virtual ~Files() = default;

    /// Where programs keep the user's data; the caller appends a folder of its own.
    virtual std::filesystem::path applicationSupportFolder() const = 0;

    /// Makes a folder with all missing parents, open to the owner only. True when it is there afterwards.
    virtual bool createFolder(const std::filesystem::path& folder) = 0;

    /// The content of a regular file of at most `limit` bytes; empty when it is missing, unreadable, larger or no
    /// regular file.
    virtual std::optional<std::string> read(const std::filesystem::path& file, std::size_t limit) const = 0;

    /// Puts `content` in the place of a file, whole or not at all, on the disk when it returns no error; a link is
    /// followed and stays. The file is open to the owner only. Missing folders are made.
    [[nodiscard]] virtual std::error_code replace(const std::filesystem::path& file, std::string_view content) = 0;

    /// The same for a document of the user's: the permissions of the file stay as they are, a new one has those that
    /// the user's files usually have, and the folder must be there.
    [[nodiscard]] virtual std::error_code saveDocument(const std::filesystem::path& file, std::string_view content) = 0;
};
