// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Subscription.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

/// The user's files. Failure is reported only where a call says so. What a function given to `load` or `update` does
/// may happen at once or later, and on another thread; what is told to `done` and the task of a `load` come on the main
/// thread. Changes of one file are made in the order of the calls.
class Files {
public:
    virtual ~Files() = default;
    using Path = std::filesystem::path;
    using Task = std::function<void()>;

    /// Makes a file's new content of its present one, which is empty if it cannot be read; empty to leave it as it is.
    using Change = std::function<std::optional<std::string>(std::optional<std::string> present)>;
    using Done = std::function<void(std::error_code)>;

    /// Where programs keep the user's data; the caller appends a folder of its own.
    virtual Path applicationSupportFolder() const = 0;

    /// Where programs keep what they remember by themselves; the caller appends a folder of its own.
    virtual Path stateFolder() const = 0;

    /// Creates a folder with all missing parents, accessible to the owner only. True if it exists afterwards.
    virtual bool createFolder(const Path& folder) = 0;

    /// The content of a regular file of at most `limit` bytes; empty when it is missing, unreadable, larger or not a
    /// regular file.
    virtual std::optional<std::string> read(const Path& file, std::size_t limit) const = 0;

    /// Reads like `read` without waiting for it: `decode` is given the content, and the task that it returns is run.
    virtual void load(const Path& file, std::size_t limit,
                      std::function<Task(std::optional<std::string> content)> decode) = 0;

    /// Changes a file, all or nothing, without waiting for it. A symbolic link is followed and kept. The file is
    /// accessible to the owner only. Missing folders are created. No other process of ours changes the file between
    /// reading and writing. A later call takes the place of one that still waits, whose `done` is then not called; its
    /// change has to do what the earlier one would have done. `done` is told of success, when the file is on the disk,
    /// or why there was none: `operation_canceled` if there was nothing to change or, in a folder that this process has
    /// claimed, if somebody else has changed the file meanwhile.
    virtual void update(const Path& file, std::size_t limit, Change change, Done done) = 0;

    /// The same with a content that does not depend on the present one.
    void replace(const Path& file, std::string content) {
        update(file, 0, [content = std::move(content)](const auto&) { return content; }, {});
    }

    /// Renames what is in this place to the same with ".damaged" or, where that is taken, ".damaged-2" and so on; of a
    /// symbolic link only the link; a regular file may also stay where it is, to be replaced. False if that is not
    /// possible. For use in a `Change`.
    virtual bool setAside(const Path& file) = 0;

    /// What has to be done to a file if the process ends before the next `update` of it and cannot call that any more.
    virtual void updateAtEnd(const Path& file, std::size_t limit, Change change) = 0;

    /// Replaces a small file at once; whether it has reached the disk is not waited for.
    [[nodiscard]] virtual std::error_code replaceNow(const Path& file, std::string_view content) = 0;

    /// Replaces a document of the user's and waits until it is on the disk: an existing file keeps its permissions, a
    /// new one gets those that the user's files usually have, and the folder must exist.
    [[nodiscard]] virtual std::error_code saveDocument(const Path& file, std::string_view content) = 0;

    /// Whether this process is the one that writes to the folder of this file, among those that ask: true for the
    /// first, until it ends, and wherever that cannot be told. Creates the folder.
    virtual bool claim(const Path& file) = 0;

    /// Calls back when another program has put another file in the place of this one, or removed it.
    [[nodiscard]] virtual Subscription onChange(const Path& file, std::function<void()> callback) = 0;
};
