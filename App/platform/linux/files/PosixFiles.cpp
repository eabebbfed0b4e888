// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/PosixFiles.h"

#include "platform/linux/files/AtomicWrite.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/files/ReadDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
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

} // namespace

PosixFiles::PosixFiles(fs::path applicationSupport) : applicationSupport_(std::move(applicationSupport)) {}

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

std::error_code PosixFiles::replace(const fs::path& file, std::string_view content) {
    // A link stays and its target is replaced: people keep their settings elsewhere and link to them.
    const fs::path target = linkTarget(file);
    if (target.has_parent_path()) {
        if (const std::error_code error = makeFolder(target.parent_path()))
            return error;
    }
    return writeAtomically(target, content, Access::owner);
}

std::error_code PosixFiles::saveDocument(const fs::path& file, std::string_view content) {
    return writeAtomically(linkTarget(file), content, Access::asUsual);
}

void PosixFiles::removeLeftovers(const fs::path& file) const {
    ::removeLeftovers(linkTarget(file));
}
