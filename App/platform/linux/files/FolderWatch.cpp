// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/FolderWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

constexpr std::uint32_t interesting = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_CREATE | IN_DELETE | IN_ATTRIB;
constexpr std::uint32_t folderIsGone = IN_DELETE_SELF | IN_MOVE_SELF;
/// Of a folder above the one that is meant only this: it may be a busy one.
constexpr std::uint32_t comes = IN_MOVED_TO | IN_CREATE;

} // namespace

FolderWatch::FolderWatch(std::function<void()> changed)
    : inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    , changed_(std::move(changed)) {
    if (!inotify_)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(inotify_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { drain(); });
}

void FolderWatch::watch(const std::set<std::filesystem::path>& entries) {
    std::map<int, std::set<std::string>> names;
    for (std::filesystem::path entry : entries) {
        // A folder that is missing is waited for in the nearest one that is there.
        std::uint32_t mask = interesting;
        for (; entry.has_relative_path(); entry = entry.parent_path()) {
            const int number = inotify_add_watch(inotify_.get(), entry.parent_path().c_str(),
                                                 mask | folderIsGone | IN_ONLYDIR | IN_MASK_ADD);
            if (number >= 0) {
                names[number].insert(entry.filename().string());
                break;
            }
            mask = comes;
        }
    }
    for (const auto& [number, unused] : names_) {
        if (!names.contains(number))
            inotify_rm_watch(inotify_.get(), number);
    }
    names_ = std::move(names);
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
            const bool known = names != names_.end();
            any = any || (event.mask & IN_Q_OVERFLOW) != 0 ||
                  (known && ((event.mask & folderIsGone) != 0 || names->second.contains(name)));
            at += sizeof event + event.len;
        }
    }
    if (any)
        changed_();
}
