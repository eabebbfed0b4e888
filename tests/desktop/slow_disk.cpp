// SPDX-License-Identifier: GPL-3.0-or-later
// A disk on which syncing takes as many seconds as the file named by VELMORA_SLOW_DISK says, or until the file says 0,
// however busy the machine's own disk is with other tests.
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

milliseconds slowness(const char* file) {
    int seconds = 0;
    std::ifstream(file) >> seconds;
    return std::chrono::seconds(seconds);
}

/// Waits until the file is replaced, at most so long.
void waitForChange(const char* file, milliseconds limit) {
    const int watch = inotify_init1(IN_CLOEXEC);
    inotify_add_watch(watch, std::filesystem::path(file).parent_path().c_str(), IN_MOVED_TO);
    pollfd change{.fd = watch, .events = POLLIN, .revents = 0};
    if (slowness(file).count() > 0) // it may have changed before it was watched
        ::poll(&change, 1, static_cast<int>(limit.count()));
    ::close(watch);
}

} // namespace

extern "C" int fsync(int /*descriptor*/) {
    const char* file = std::getenv("VELMORA_SLOW_DISK");
    const auto began = Clock::now();
    const auto left = [&] { return slowness(file) - std::chrono::duration_cast<milliseconds>(Clock::now() - began); };
    while (file != nullptr && left().count() > 0)
        waitForChange(file, std::max(left(), milliseconds(1)));
    return 0;
}
