// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Files.h"
#include "platform/linux/files/AtomicWrite.h"
#include "platform/linux/files/FileDescriptor.h"

#include <sys/stat.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

/// Files of a POSIX file system, written so that a crash or a power cut leaves either the old or the new content. All
/// of it happens at once, on the calling thread. Only `onChange` is for the main thread alone.
class PosixFiles final : public Files {
public:
    /// What `applicationSupportFolder()` and `stateFolder()` return.
    PosixFiles(Path applicationSupport, Path state);
    explicit PosixFiles(const Path& both) : PosixFiles(both, both) {}

    Path applicationSupportFolder() const override;
    Path stateFolder() const override { return state_; }
    bool createFolder(const Path& folder) override;
    std::optional<std::string> read(const Path& file, std::size_t limit) const override;
    void load(const Path& file, std::size_t limit,
              std::function<Task(std::optional<std::string> content)> decode) override;
    void update(const Path& file, std::size_t limit, Change change, Done done) override;

    bool setAside(const Path& file) override;

    /// Nothing: this class never leaves a file for later.
    void updateAtEnd(const Path& file, std::size_t limit, Change change) override;
    [[nodiscard]] std::error_code replaceNow(const Path& file, std::string_view content) override;
    [[nodiscard]] std::error_code saveDocument(const Path& file, std::string_view content) override;
    bool claim(const Path& file) override;
    [[nodiscard]] Subscription onChange(const Path& file, std::function<void()> callback) override;

    /// One `update`. Without syncing, it does not wait for other processes either. Once `isOvertaken` is true, the
    /// file is not replaced any more.
    [[nodiscard]] std::error_code change(const Path& file, std::size_t limit, const Change& change, Sync sync,
                                         const std::atomic<bool>* isOvertaken = nullptr);

    /// Has what `replaceNow` wrote reach the disk.
    void sync(const Path& file);

    /// Removes what a crash during `update` left beside the file, or beside the target of a link. Leaves alone what
    /// another process is writing right now.
    void removeLeftovers(const Path& file) const;

    /// Where the links at `file` lead, whether or not anything is there; `file` itself if it is no link, or if the
    /// links form a loop.
    static Path linkTarget(const Path& file);

private:
    /// What tells two files at the same place apart: file systems give the number of a file that is gone to a new one.
    struct Identity {
        dev_t device;
        ino_t number;
        std::int64_t seconds; ///< of the last change of its content
        long nanoseconds;
        bool operator==(const Identity&) const = default;
    };

    Path applicationSupport_;
    Path state_;
    mutable std::mutex mutex_;              ///< for what follows
    std::map<Path, FileDescriptor> claims_; ///< by folder
    std::map<Path, Identity> written_;      ///< the files that we have put in place, by where

    bool isClaimed(const Path& folder) const;
    bool isOurs(const Path& file) const;
    static Identity identity(const struct stat& status);
};
