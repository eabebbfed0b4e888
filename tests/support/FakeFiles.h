// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Files.h"

#include <map>
#include <set>
#include <string>
#include <vector>

/// Files in memory.
class FakeFiles final : public Files {
public:
    std::filesystem::path support = "/home/user/.local/share";
    std::map<std::filesystem::path, std::string> files;
    std::set<std::filesystem::path> folders;
    std::vector<std::filesystem::path> documents; ///< the files saved with `saveDocument`
    bool refusesReads = false;
    bool refusesWrites = false;
    mutable std::vector<std::filesystem::path> readPaths; ///< the files that were read, in order
    std::vector<std::filesystem::path> replacedPaths;     ///< including refused ones

    std::filesystem::path applicationSupportFolder() const override { return support; }

    bool createFolder(const std::filesystem::path& folder) override {
        if (refusesWrites)
            return folders.contains(folder);
        folders.insert(folder);
        return true;
    }

    std::optional<std::string> read(const std::filesystem::path& file, std::size_t limit) const override {
        readPaths.push_back(file);
        const auto found = files.find(file);
        if (refusesReads || found == files.end() || found->second.size() > limit)
            return std::nullopt;
        return found->second;
    }

    std::error_code replace(const std::filesystem::path& file, std::string_view content) override {
        replacedPaths.push_back(file);
        if (refusesWrites)
            return std::make_error_code(std::errc::no_space_on_device);
        folders.insert(file.parent_path());
        files.insert_or_assign(file, std::string(content));
        return {};
    }

    std::error_code saveDocument(const std::filesystem::path& file, std::string_view content) override {
        documents.push_back(file);
        return replace(file, content);
    }
};
