// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/SystemClock.h"

#include <ctime>

namespace {

Duration read(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

Date SystemClock::now() const {
    return Date(read(CLOCK_REALTIME));
}

Duration SystemClock::uptime() const {
    return read(CLOCK_BOOTTIME);
}

Duration SystemClock::slept() const {
    return read(CLOCK_BOOTTIME) - read(CLOCK_MONOTONIC);
}
