// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

class Bundle;
class Files;
class NotificationCenter;

/// The notification for users whose desktop shows no status items, and who would believe that nothing was started. It
/// is shown once ever, which a file of ours remembers.
class RunningNotice {
public:
    /// The file in the folder.
    static std::filesystem::path file(const std::filesystem::path& folder) { return folder / "running-told"; }

    /// `folder` holds the file; it is created when there is something to remember.
    RunningNotice(Files& files, const std::filesystem::path& folder, NotificationCenter& center, const Bundle& bundle);

    /// Shows it, unless it has been shown before, cannot be remembered, or there are no notifications outside a bundle.
    void show();

private:
    Files& files_;
    std::filesystem::path file_;
    NotificationCenter& center_;
    const Bundle& bundle_;
};
