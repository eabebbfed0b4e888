// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

/// The user's files. All calls are synchronous, and report failure only by their return value.
class Files {
public:
    virtual ~Files() = default;

    /// Where programs keep the user's data; the caller appends a folder of its own.
    virtual std::filesystem::path applicationSupportFolder() const = 0;

    /// Creates a folder with all missing parents, accessible to the owner only. True if it exists afterwards.
    virtual bool createFolder(const std::filesystem::path& folder) = 0;

    /// The content of a regular file of at most `limit` bytes; empty when it is missing, unreadable, larger or not a
    /// regular file.
    virtual std::optional<std::string> read(const std::filesystem::path& file, std::size_t limit) const = 0;

    /// Replaces the content of a file, all or nothing; it is on the disk when no error is returned. A symbolic link is
    /// followed and kept. The file is accessible to the owner only. Missing folders are created.
    [[nodiscard]] virtual std::error_code replace(const std::filesystem::path& file, std::string_view content) = 0;

    /// The same for a document of the user's: an existing file keeps its permissions, a new one gets those that the
    /// user's files usually have, and the folder must exist.
    [[nodiscard]] virtual std::error_code saveDocument(const std::filesystem::path& file, std::string_view content) = 0;
};
