// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Files.h"
#include "platform/Observers.h"

#include <map>
#include <set>
#include <string>
#include <utility>
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
    std::errc refusal = std::errc::no_space_on_device;
    mutable std::vector<std::filesystem::path> readPaths; ///< the files that were read, in order
    std::vector<std::filesystem::path> replacedPaths;     ///< including refused ones
    bool isClaimedByAnother = false;                      ///< another program writes the files
    bool holdsLoads = false;                              ///< the next `load` waits in `heldLoads`
    std::vector<Task> heldLoads;                          ///< a slow disk, until a test runs them
    bool holdsUpdates = false;                            ///< from now on each `update` waits in `heldUpdates`
    std::vector<Task> heldUpdates;
    std::map<Path, Task> lastChanges; ///< what `updateAtEnd` was told
    std::map<Path, Observers<>> changes;

    std::filesystem::path applicationSupportFolder() const override { return support; }
    std::filesystem::path stateFolder() const override { return "/home/user/.local/state"; }

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

    void load(const Path& file, std::size_t limit,
              std::function<Task(std::optional<std::string> content)> decode) override {
        if (std::exchange(holdsLoads, false))
            heldLoads.push_back([=, this] { decode(read(file, limit))(); });
        else
            decode(read(file, limit))();
    }

    void update(const Path& file, std::size_t limit, Change change, Done done) override {
        lastChanges.erase(file);
        if (holdsUpdates)
            heldUpdates.push_back([=, this] { updateNow(file, limit, change, done); });
        else
            updateNow(file, limit, change, done);
    }

    void updateNow(const Path& file, std::size_t limit, const Change& change, const Done& done) {
        const auto content = change(limit > 0 ? read(file, limit) : std::nullopt);
        const std::error_code error =
            content ? replaceNow(file, *content) : std::make_error_code(std::errc::operation_canceled);
        if (done)
            done(error);
    }

    bool setAside(const Path& file) override {
        const auto found = files.find(file);
        if (refusesWrites || found == files.end())
            return false;
        files[file.string() + ".damaged"] = std::exchange(found->second, {});
        files.erase(file);
        return true;
    }

    void updateAtEnd(const Path& file, std::size_t limit, Change change) override {
        lastChanges.insert_or_assign(file, [=, this] { updateNow(file, limit, change, {}); });
    }

    std::error_code replaceNow(const Path& file, std::string_view content) override {
        replacedPaths.push_back(file);
        if (refusesWrites)
            return std::make_error_code(refusal);
        folders.insert(file.parent_path());
        files.insert_or_assign(file, std::string(content));
        return {};
    }

    std::error_code saveDocument(const Path& file, std::string_view content) override {
        documents.push_back(file);
        return replaceNow(file, content);
    }

    bool claim(const Path& /*file*/) override { return !isClaimedByAnother; }

    [[nodiscard]] Subscription onChange(const Path& file, std::function<void()> callback) override {
        return changes[file].add(std::move(callback));
    }

    /// The process ends without its main loop.
    void end() {
        const auto all = std::exchange(lastChanges, {});
        for (const auto& [file, change] : all)
            change();
    }

    /// Another program puts a file in the place of this one.
    void replaceByAnother(const Path& file, std::string content) {
        files.insert_or_assign(file, std::move(content));
        changes[file].notify();
    }
};
