// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/files/FileDescriptor.h"

#include <QSocketNotifier>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

/// Tells when entries of some folders were written, renamed, linked, removed, or came back (inotify).
class FolderWatch {
public:
    /// `changed` is called once for each bunch of events that concern a watched name.
    explicit FolderWatch(std::function<void()> changed);
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    /// Watches exactly these paths from now on, each for its coming, going and changing; so call it again after a
    /// change.
    void watch(const std::set<std::filesystem::path>& entries);

private:
    FileDescriptor inotify_;
    std::map<int, std::set<std::string>> names_;
    std::function<void()> changed_;
    std::unique_ptr<QSocketNotifier> notifier_;

    void drain();
};
