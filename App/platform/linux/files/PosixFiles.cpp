// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/PosixFiles.h"

#include "platform/linux/files/FolderWatch.h"
#include "platform/linux/files/ReadDescriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <utility>

namespace fs = std::filesystem;

namespace {

/// Creates the folder and its missing parents, for the owner only; no error if it exists.
std::error_code makeFolder(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error))
        return {};
    if (folder.has_parent_path() && folder.parent_path() != folder) {
        if (const std::error_code failure = makeFolder(folder.parent_path()))
            return failure;
    }
    if (::mkdir(folder.c_str(), 0700) == 0)
        return {};
    const int failure = errno;
    if (failure == EEXIST) // made by somebody else meanwhile, or no folder
        return fs::is_directory(folder, error) ? std::error_code() : std::make_error_code(std::errc::not_a_directory);
    return {failure, std::system_category()};
}

/// Keeps other processes of ours from writing. It locks the folder itself, so no lock file is left lying about. It
/// waits up to five seconds, because on a busy machine a process that writes again and again hardly lets go between two
/// writes; after that, and on file systems without locks, the write goes ahead without it.
class FolderLock {
public:
    explicit FolderLock(const fs::path& folder)
        : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        using namespace std::chrono_literals;
        const auto limit = std::chrono::steady_clock::now() + 5s;
        while (descriptor_ && ::flock(descriptor_.get(), LOCK_EX | LOCK_NB) != 0) {
            if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() > limit)
                return;
            std::this_thread::sleep_for(1ms);
        }
    }

private:
    FileDescriptor descriptor_;
};

} // namespace

PosixFiles::PosixFiles(fs::path applicationSupport, fs::path state)
    : applicationSupport_(std::move(applicationSupport))
    , state_(std::move(state)) {}

fs::path PosixFiles::applicationSupportFolder() const {
    return applicationSupport_;
}

bool PosixFiles::createFolder(const fs::path& folder) {
    return !makeFolder(folder);
}

std::optional<std::string> PosixFiles::read(const fs::path& file, std::size_t limit) const {
    // Non-blocking: opening a pipe in the file's place would wait for a writer.
    const FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    if (std::cmp_greater(status.st_size, limit))
        return std::nullopt;
    constexpr std::size_t roomForParsers = 64; // simdjson reads beyond the end, and would copy the text to have room
    return readDescriptor(descriptor.get(), limit, static_cast<std::size_t>(status.st_size) + roomForParsers);
}

fs::path PosixFiles::linkTarget(const fs::path& file) {
    constexpr int mostLinks = 40; // as the kernel
    fs::path target = file;
    std::error_code error;
    for (int links = 0; links < mostLinks; ++links) {
        if (!fs::is_symlink(target, error))
            return target;
        const fs::path next = fs::read_symlink(target, error);
        if (error)
            return file;
        target = next.is_absolute() ? next : target.parent_path() / next;
    }
    return file;
}

void PosixFiles::load(const fs::path& file, std::size_t limit,
                      std::function<Task(std::optional<std::string> content)> decode) {
    decode(read(file, limit))();
}

void PosixFiles::update(const fs::path& file, std::size_t limit, Change change, Done done) {
    const std::error_code error = this->change(file, limit, change, Sync::wait);
    if (done)
        done(error);
}

bool PosixFiles::setAside(const fs::path& file) {
    constexpr int mostAside = 100;
    std::error_code error;
    for (int number = 1; number <= mostAside; ++number) {
        fs::path aside = file;
        aside += number == 1 ? ".damaged" : ".damaged-" + std::to_string(number);
        if (fs::exists(fs::symlink_status(aside, error)))
            continue;
        // Where that is possible, there is a file in its place at every moment.
        if (fs::is_regular_file(fs::symlink_status(file, error)) && ::link(file.c_str(), aside.c_str()) == 0)
            return true;
        fs::rename(file, aside, error);
        return !error;
    }
    return false;
}

void PosixFiles::updateAtEnd(const fs::path& /*file*/, std::size_t /*limit*/, Change /*change*/) {}

std::error_code PosixFiles::change(const fs::path& file, std::size_t limit, const Change& change, Sync sync,
                                   const std::atomic<bool>* isOvertaken) {
    const auto canceled = std::make_error_code(std::errc::operation_canceled);
    const auto mayGoOn = [isOvertaken] { return isOvertaken == nullptr || !*isOvertaken; };
    std::optional<FolderLock> lock;
    std::optional<std::string> present;
    if (limit > 0) {
        if (const std::error_code error = makeFolder(file.parent_path()))
            return error;
        if (sync == Sync::wait && !isClaimed(file.parent_path()))
            lock.emplace(file.parent_path());
        if (!mayGoOn())
            return canceled;
        present = read(file, limit);
    }
    const std::optional<std::string> content = change(present);
    if (!content)
        return canceled;
    // A link stays and its target is replaced: people keep their settings elsewhere and link to them.
    const fs::path target = linkTarget(file);
    if (target.has_parent_path()) {
        if (const std::error_code error = makeFolder(target.parent_path()))
            return error;
    }
    return writeAtomically(
        target, *content, Access::owner, sync, [&](int descriptor, const char* from, const char* to) {
            struct stat status {};
            const std::lock_guard hold(mutex_);
            // Without a lock, another process may have written while the disk was waited for.
            if (!mayGoOn() || ::fstat(descriptor, &status) != 0 || (limit > 0 && !lock && read(file, limit) != present))
                return canceled;
            const std::error_code error = renameFile(descriptor, from, to);
            if (!error)
                written_.insert_or_assign(file, identity(status));
            return error;
        });
}

std::error_code PosixFiles::replaceNow(const fs::path& file, std::string_view content) {
    return change(
        file, 0, [content](const auto&) { return std::string(content); }, Sync::skip);
}

void PosixFiles::sync(const fs::path& file) {
    for (const fs::path& path : {file, file.parent_path()}) {
        if (const FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)); descriptor)
            std::ignore = ::fsync(descriptor.get());
    }
}

std::error_code PosixFiles::saveDocument(const fs::path& file, std::string_view content) {
    return writeAtomically(linkTarget(file), content, Access::asUsual);
}

void PosixFiles::removeLeftovers(const fs::path& file) const {
    ::removeLeftovers(linkTarget(file));
}

bool PosixFiles::isClaimed(const fs::path& folder) const {
    struct stat held {};
    struct stat present {};
    const std::lock_guard hold(mutex_);
    const auto claim = claims_.find(folder);
    return claim != claims_.end() && ::fstat(claim->second.get(), &held) == 0 &&
           ::stat(folder.c_str(), &present) == 0 && held.st_dev == present.st_dev && held.st_ino == present.st_ino;
}

bool PosixFiles::claim(const fs::path& file) {
    const fs::path folder = file.parent_path();
    if (isClaimed(folder))
        return true;
    makeFolder(folder);
    FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor)
        return true;
    if (::flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0)
        return errno != EWOULDBLOCK;
    const std::lock_guard hold(mutex_);
    claims_.insert_or_assign(folder, std::move(descriptor));
    return true;
}

Subscription PosixFiles::onChange(const fs::path& file, std::function<void()> callback) {
    const auto watch = std::make_shared<std::optional<FolderWatch>>();
    const auto entries = [file] { return std::set{file, linkTarget(file)}; };
    watch->emplace([this, file, entries, &watch = *watch, callback = std::move(callback)] {
        watch->watch(entries());
        if (!isOurs(file))
            callback();
    });
    (*watch)->watch(entries());
    return Subscription([watch] {});
}

bool PosixFiles::isOurs(const fs::path& file) const {
    struct stat status {};
    const bool isThere = ::stat(file.c_str(), &status) == 0;
    const std::lock_guard hold(mutex_);
    const auto own = written_.find(file);
    return isThere && own != written_.end() && own->second == identity(status);
}

PosixFiles::Identity PosixFiles::identity(const struct stat& status) {
    return {.device = status.st_dev,
            .number = status.st_ino,
            .seconds = status.st_mtim.tv_sec,
            .nanoseconds = status.st_mtim.tv_nsec};
}
