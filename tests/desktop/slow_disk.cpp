// SPDX-License-Identifier: GPL-3.0-or-later
// A disk on which syncing takes as many seconds as the file named by VELMORA_SLOW_DISK says, however busy the machine's
// own disk is with other tests.
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

extern "C" int fsync(int /*descriptor*/) {
    double seconds = 0;
    if (const char* file = std::getenv("VELMORA_SLOW_DISK"))
        std::ifstream(file) >> seconds;
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    return 0;
}
