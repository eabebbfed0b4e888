// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Files.h"

/// Files of a POSIX file system, written so that a crash or a power cut leaves either the old or the new content.
class PosixFiles final : public Files {
public:
    /// `applicationSupport` is what `applicationSupportFolder()` returns.
    explicit PosixFiles(std::filesystem::path applicationSupport);

    std::filesystem::path applicationSupportFolder() const override;
    bool createFolder(const std::filesystem::path& folder) override;
    std::optional<std::string> read(const std::filesystem::path& file, std::size_t limit) const override;
    [[nodiscard]] std::error_code replace(const std::filesystem::path& file, std::string_view content) override;
    [[nodiscard]] std::error_code saveDocument(const std::filesystem::path& file, std::string_view content) override;

    /// Removes what a crash during `replace` left beside the file, or beside the target of a link. Leaves alone what
    /// another process is writing right now.
    void removeLeftovers(const std::filesystem::path& file) const;

    /// Where the links at `file` lead, whether or not anything is there; `file` itself if it is no link, or if the
    /// links form a loop.
    static std::filesystem::path linkTarget(const std::filesystem::path& file);

private:
    std::filesystem::path applicationSupport_;
};
