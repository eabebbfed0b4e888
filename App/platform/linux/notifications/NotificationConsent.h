// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"

#include <filesystem>
#include <optional>

class Files;

/// What the user said when asked about notifications, kept in a file of ours: the desktops have switches for each
/// application but do not ask, and tell no one. It never becomes "denied" here, since that is the desktop's to say.
class NotificationConsent {
public:
    /// Where in the folder it is kept.
    static std::filesystem::path file(const std::filesystem::path& folder) { return folder / "notifications"; }

    /// `folder` is where the file is kept; it is made when there is something to keep.
    NotificationConsent(Files& files, const std::filesystem::path& folder);

    /// The answer so far. A file that is damaged or cannot be read is none.
    NotificationCenter::AuthorizationStatus status() const;

    /// The user agrees. Where it cannot be written it holds as long as this object.
    void give();

private:
    Files& files_;
    std::filesystem::path file_;
    mutable std::optional<NotificationCenter::AuthorizationStatus> status_; ///< empty until it was needed
};
