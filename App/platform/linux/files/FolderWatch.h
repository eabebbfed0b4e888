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

/// Watches entries of folders with inotify: whether they are written, renamed, linked, removed, or come back.
class FolderWatch {
public:
    /// `changed` is called once for each batch of events with a watched name.
    explicit FolderWatch(std::function<void()> changed);
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    /// From now on watches exactly these paths, whether or not they exist yet. To be called again after each change,
    /// since a folder may have been replaced.
    void watch(const std::set<std::filesystem::path>& entries);

private:
    FileDescriptor inotify_;
    std::map<int, std::set<std::string>> names_;
    std::function<void()> changed_;
    std::unique_ptr<QSocketNotifier> notifier_;

    void drain();
};
