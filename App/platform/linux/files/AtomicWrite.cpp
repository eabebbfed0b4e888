// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/AtomicWrite.h"

#include "platform/linux/files/FileDescriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

namespace fs = std::filesystem;

// A temporary file stays locked as long as it exists, and the kernel drops the lock of a process that has died. So a
// file whose lock is free is left over, or was made this very moment: after locking it, its maker checks that it is
// still there. On file systems without locks, leftovers stay.

namespace {

constexpr std::string_view randomPart = "XXXXXX"; // of mkostemp

std::error_code lastError() {
    return {errno, std::system_category()};
}

template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// How the names of the temporary files of `target` begin. Our name is in it because other programs make hidden files
/// with random endings too.
std::string prefixOf(const fs::path& target) {
    return "." + target.filename().string() + ".velmora-";
}

bool fitsIntoAName(const std::string& prefix) {
    return prefix.size() + randomPart.size() <= NAME_MAX;
}

struct TemporaryFile {
    std::string path;
    FileDescriptor descriptor;
};

/// On failure there is no descriptor, and errno has the reason.
TemporaryFile makeTemporaryFile(const fs::path& target) {
    std::string prefix = prefixOf(target);
    if (!fitsIntoAName(prefix))
        prefix = ".velmora-";
    constexpr int attempts = 10; // the first succeeds unless another process of ours is starting right now
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::string path = (target.parent_path() / (prefix + std::string(randomPart))).string();
        FileDescriptor descriptor(uninterrupted([&] { return ::mkostemp(path.data(), O_CLOEXEC); })); // 0600
        if (!descriptor)
            return {};
        if (::flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
            continue; // somebody is removing it
        struct stat status {};
        if (::fstat(descriptor.get(), &status) == 0 && status.st_nlink > 0)
            return {std::move(path), std::move(descriptor)};
    }
    errno = EBUSY;
    return {};
}

std::error_code writeAll(int descriptor, std::string_view content, Sync sync) {
    while (!content.empty()) {
        const ssize_t count = uninterrupted([&] { return ::write(descriptor, content.data(), content.size()); });
        if (count < 0)
            return lastError();
        if (count == 0)
            return std::make_error_code(std::errc::io_error);
        content.remove_prefix(static_cast<std::size_t>(count));
    }
    if (sync == Sync::wait && uninterrupted([&] { return ::fsync(descriptor); }) != 0)
        return lastError();
    return {};
}

/// Without this a rename may be lost when the power fails. If the folder cannot be read or synced by itself, the whole
/// file system that `file` is on is synced.
std::error_code syncFolder(const fs::path& folder, int file) {
    const FileDescriptor descriptor(
        uninterrupted([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (descriptor && uninterrupted([&] { return ::fsync(descriptor.get()); }) == 0)
        return {};
    if ((descriptor && errno == EIO) || ::syncfs(file) != 0)
        return lastError();
    return {};
}

/// The umask. umask() itself can only tell it by setting another one, which other threads' new files would then get.
mode_t userMask() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        mode_t mask = 0;
        if (word == "Umask:" && status >> std::oct >> mask)
            return mask;
    }
    return 077;
}

/// The mode of an existing file, or the one that the user's programs would give a new file.
mode_t usualMode(const fs::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode))
        return status.st_mode & 07777;
    return 0666 & ~userMask();
}

void removeIfLeftOver(const fs::path& file) {
    // Does not follow a link or wait for a pipe. For writing, because some network file systems want that for a lock.
    const FileDescriptor descriptor(::open(file.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_uid != ::geteuid())
        return;
    if (::flock(descriptor.get(), LOCK_EX | LOCK_NB) == 0)
        ::unlink(file.c_str());
}

} // namespace

std::error_code renameFile(int /*descriptor*/, const char* from, const char* to) {
    return ::rename(from, to) == 0 ? std::error_code() : lastError();
}

std::error_code writeAtomically(const fs::path& target, std::string_view content, Access access, Sync sync,
                                const Rename& rename) {
    // A user who links the file to /dev/null wants nothing kept, and no regular file in place of the device.
    struct stat status {};
    if (::stat(target.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode))
        return std::make_error_code(std::errc::operation_not_supported);
    const TemporaryFile temporary = makeTemporaryFile(target);
    if (!temporary.descriptor)
        return lastError();
    std::error_code error = writeAll(temporary.descriptor.get(), content, sync);
    if (!error && access == Access::asUsual)
        ::fchmod(temporary.descriptor.get(), usualMode(target)); // some file systems have no modes
    if (!error)
        error = rename(temporary.descriptor.get(), temporary.path.c_str(), target.c_str());
    if (error) {
        ::unlink(temporary.path.c_str());
        return error;
    }
    return sync == Sync::wait ? syncFolder(target.parent_path(), temporary.descriptor.get()) : std::error_code();
}

void removeLeftovers(const fs::path& target) {
    const std::string prefix = prefixOf(target);
    const auto isOurs = [&prefix](std::string_view name) {
        const auto isRandom = [](char letter) {
            return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
                   (letter >= '0' && letter <= '9');
        };
        return name.size() == prefix.size() + randomPart.size() && name.starts_with(prefix) &&
               std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(), isRandom);
    };
    std::error_code error;
    for (fs::directory_iterator entry(target.parent_path(), error), end; !error && entry != end;
         entry.increment(error)) {
        if (isOurs(entry->path().filename().native()))
            removeIfLeftOver(entry->path());
    }
}
