// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"

#include <filesystem>
#include <optional>

class Files;

/// What the user answered when asked about notifications, kept in a file of ours. Desktops have a switch per
/// application, but neither ask the user nor report its state, so the status here is never "denied".
class NotificationConsent {
public:
    /// The file in the folder.
    static std::filesystem::path file(const std::filesystem::path& folder) { return folder / "notifications"; }

    /// `folder` holds the file; it is created when there is something to keep.
    NotificationConsent(Files& files, const std::filesystem::path& folder);

    /// The answer so far; a file that is damaged or cannot be read counts as no answer.
    NotificationCenter::AuthorizationStatus status() const;

    /// The user agrees. If that cannot be written, it holds as long as this object lives.
    void give();

private:
    Files& files_;
    std::filesystem::path file_;
    mutable std::optional<NotificationCenter::AuthorizationStatus> status_; ///< empty until first needed
};
