// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/FolderWatch.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr std::uint32_t interesting =
    IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_CREATE | IN_DELETE | IN_ATTRIB | IN_ONLYDIR;

} // namespace

FolderWatch::FolderWatch(std::function<void()> changed)
    : inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), changed_(std::move(changed)) {
    if (!inotify_)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(inotify_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { drain(); });
}

void FolderWatch::watch(const std::set<std::filesystem::path>& entries) {
    std::map<std::filesystem::path, int> folders;
    names_.clear();
    for (const auto& entry : entries) {
        const auto folder = entry.parent_path();
        // Adding a watch for a folder that has one gives the same number again; one that was deleted and made anew gets
        // a new number.
        const int number = inotify_add_watch(inotify_.get(), folder.c_str(), interesting);
        if (number < 0)
            continue;
        folders[folder] = number;
        names_[number].insert(entry.filename().string());
    }
    for (const auto& [folder, number] : folders_) {
        if (!names_.contains(number))
            inotify_rm_watch(inotify_.get(), number);
    }
    folders_ = std::move(folders);
}

void FolderWatch::drain() {
    bool any = false;
    alignas(inotify_event) std::array<char, 4096> block{};
    for (;;) {
        const ssize_t count = ::read(inotify_.get(), block.data(), block.size());
        if (count <= 0)
            break;
        for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
            inotify_event event{};
            std::memcpy(&event, block.data() + at, sizeof event);
            const char* name = event.len > 0 ? block.data() + at + sizeof event : "";
            const auto names = names_.find(event.wd);
            any = any || (event.mask & IN_Q_OVERFLOW) != 0 || (names != names_.end() && names->second.contains(name));
            at += sizeof event + event.len;
        }
    }
    if (any)
        changed_();
}
