// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainLoop.h"
#include "platform/linux/files/DiskThread.h"
#include "platform/linux/files/PosixFiles.h"

#include <chrono>

/// The files of the disk, loaded and updated on a thread of their own, so that a disk that is slow, asleep or busy
/// holds nothing up.
class BackgroundFiles final : public Files {
public:
    /// `loop` is where results are told. Its thread begins only after `rest`, unless it is waited for before.
    BackgroundFiles(PosixFiles& disk, MainLoop& loop, std::chrono::milliseconds rest = {})
        : disk_(disk)
        , loop_(loop)
        , thread_(rest) {}

    Path applicationSupportFolder() const override { return disk_.applicationSupportFolder(); }
    Path stateFolder() const override { return disk_.stateFolder(); }
    bool createFolder(const Path& folder) override { return disk_.createFolder(folder); }
    std::optional<std::string> read(const Path& file, std::size_t limit) const override {
        return disk_.read(file, limit);
    }
    void load(const Path& file, std::size_t limit,
              std::function<Task(std::optional<std::string> content)> decode) override;
    void update(const Path& file, std::size_t limit, Change change, Done done) override;
    bool setAside(const Path& file) override { return disk_.setAside(file); }
    void updateAtEnd(const Path& file, std::size_t limit, Change change) override;
    [[nodiscard]] std::error_code replaceNow(const Path& file, std::string_view content) override;
    [[nodiscard]] std::error_code saveDocument(const Path& file, std::string_view content) override {
        return disk_.saveDocument(file, content);
    }
    bool claim(const Path& file) override { return disk_.claim(file); }
    [[nodiscard]] Subscription onChange(const Path& file, std::function<void()> callback) override {
        return disk_.onChange(file, std::move(callback));
    }

    /// Removes what a crash left beside the file.
    void removeLeftovers(const Path& file);

    /// Runs a task once all that has been asked for until now is on the disk, or after `limit`.
    void afterUpdates(Duration limit, Task task);

    /// Does what `updateAtEnd` was told, because the main thread cannot any more. For any thread.
    void updateAtEndNow() { thread_.doLastJobs(); }

    /// Waits up to `limit` until all is on the disk; after that, the newest contents are put in place without waiting
    /// for the disk. False if it came to that: the process then has to end without destroying anything. For any thread.
    [[nodiscard]] bool finish(std::chrono::milliseconds limit) { return thread_.finish(limit); }

private:
    PosixFiles& disk_;
    MainLoop& loop_;
    int awaited_ = 0; ///< tasks given to `afterUpdates`
    DiskThread thread_;

    DiskThread::Job updating(const Path& file, std::size_t limit, Change change, Done done);
};
