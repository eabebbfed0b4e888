// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/ProgramFiles.h"

#include <system_error>

std::filesystem::path runningExecutable() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::filesystem::path prefixOf(const std::filesystem::path& executable) {
    return executable.parent_path().parent_path();
}

std::filesystem::path programFile(const std::filesystem::path& belowPrefix) {
    // Looked up once: an executable that is replaced while we run is moved elsewhere before it is removed.
    static const std::filesystem::path prefix = prefixOf(runningExecutable());
    return prefix / belowPrefix;
}
