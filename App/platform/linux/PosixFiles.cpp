// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/PosixFiles.h"

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/ReadDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

std::error_code lastError() {
    return {errno, std::system_category()};
}

bool writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t count = ::write(descriptor, content.data(), content.size());
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            content.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// Without this a rename may be lost when the power fails.
void syncFolder(const fs::path& folder) {
    const FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor)
        ::fsync(descriptor.get());
}

} // namespace

PosixFiles::PosixFiles(fs::path applicationSupport) : applicationSupport_(std::move(applicationSupport)) {}

fs::path PosixFiles::applicationSupportFolder() const {
    return applicationSupport_;
}

bool PosixFiles::createFolder(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error))
        return true;
    if (folder.has_parent_path() && folder.parent_path() != folder && !createFolder(folder.parent_path()))
        return false;
    return ::mkdir(folder.c_str(), 0700) == 0 || fs::is_directory(folder, error);
}

std::optional<std::string> PosixFiles::read(const fs::path& file, std::size_t limit) const {
    // Not blocking: opening a pipe that somebody put there would wait for a writer.
    const FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    if (std::cmp_greater(status.st_size, limit))
        return std::nullopt;
    return readDescriptor(descriptor.get(), limit);
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

std::error_code PosixFiles::replace(const fs::path& file, std::string_view content) {
    // A link stays where it is and its target is replaced: people keep their settings elsewhere and link to them.
    const fs::path target = linkTarget(file);
    const fs::path folder = target.parent_path();
    createFolder(folder); // where it fails, so does what follows, and says why
    std::string temporary = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
    const FileDescriptor descriptor(::mkostemp(temporary.data(), O_CLOEXEC)); // made for the owner only
    if (!descriptor)
        return lastError();
    if (!writeAll(descriptor.get(), content) || ::fsync(descriptor.get()) != 0 ||
        ::rename(temporary.c_str(), target.c_str()) != 0) {
        const std::error_code error = lastError();
        ::unlink(temporary.c_str());
        return error;
    }
    syncFolder(folder);
    return {};
}
