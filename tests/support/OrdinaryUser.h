// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

/// Makes this process run as an ordinary user for the lifetime of this object, so that permissions matter even if the
/// tests run as root. Does nothing if they do not.
class OrdinaryUser {
public:
    /// `home` and everything in it are given to that user.
    explicit OrdinaryUser(const std::filesystem::path& home) {
        if (!wasRoot_)
            return;
        own(home);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(home))
            own(entry.path());
        if (::setegid(nobody) != 0 || ::seteuid(nobody) != 0)
            std::abort();
    }
    ~OrdinaryUser() {
        if (wasRoot_ && (::seteuid(0) != 0 || ::setegid(0) != 0))
            std::abort();
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr unsigned nobody = 65534;
    const bool wasRoot_ = ::geteuid() == 0;

    static void own(const std::filesystem::path& path) {
        if (::lchown(path.c_str(), nobody, nobody) != 0)
            std::abort();
    }
};
