// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

/// Runs a part of a test in a child process, which may give up rights and limits for good. True if all its expectations
/// hold and it runs to the end.
template <class Part>
[[nodiscard]] bool inChild(Part part) {
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        part();
        std::fflush(stdout);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

/// From now on no file can grow beyond that size in this process. Only for a child process, because the limit cannot be
/// raised again.
inline void limitFileSize(std::size_t bytes) {
    const rlimit limit{.rlim_cur = bytes, .rlim_max = bytes};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

/// Mounts a file system of that size over the folder, for this process only. Only for a child process, and before it
/// becomes another user. False where the system does not allow it.
[[nodiscard]] inline bool mountSmallDisk(const std::filesystem::path& folder, std::size_t bytes) {
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (::unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0)
        return false;
    if (user != 0) {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1";
        std::ofstream("/proc/self/gid_map") << group << ' ' << group << " 1";
    }
    const std::string options = "mode=777,size=" + std::to_string(bytes);
    return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("velmora-test", folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
}
