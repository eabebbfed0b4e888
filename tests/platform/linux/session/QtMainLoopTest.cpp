// SPDX-License-Identifier: GPL-3.0-or-later
#undef _FORTIFY_SOURCE // with it, the C library defines checks under the names of the functions replaced here
#include "platform/linux/session/QtMainLoop.h"

#include <QEventLoop>
#include <gtest/gtest.h>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr std::int64_t billion = 1'000'000'000;

/// The time that Qt's timers see during a test; it advances only while the event loop waits.
struct VirtualTime {
    static inline std::atomic<bool> isOn = false;
    static inline std::atomic<std::int64_t> now = 0;       ///< nanoseconds
    static inline std::atomic<std::int64_t> lateness = 0;  ///< how late the system wakes a waiting thread
    static inline std::atomic<int> waits = 0;              ///< how many calls have waited
    static inline std::atomic<bool> waitedForever = false; ///< in a wait that nothing would have ended

    VirtualTime() {
        now = 1000 * billion;
        lateness = 0;
        waits = 0;
        waitedForever = false;
        isOn = true;
    }
    ~VirtualTime() { isOn = false; }
    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;
};

timespec fields(std::int64_t nanoseconds) {
    return {.tv_sec = nanoseconds / billion, .tv_nsec = nanoseconds % billion};
}

int wait(pollfd* files, nfds_t count, std::optional<std::int64_t> limit, const sigset_t* mask) {
    constexpr std::size_t sizeOfMask = 8; // bytes in the kernel's signal mask
    if (!VirtualTime::isOn) {
        const timespec time = fields(limit.value_or(0));
        return static_cast<int>(
            ::syscall(SYS_ppoll, files, count, limit ? &time : nullptr, mask, mask != nullptr ? sizeOfMask : 0));
    }
    const timespec now{};
    const auto ready = static_cast<int>(::syscall(SYS_ppoll, files, count, &now, nullptr, 0));
    if (ready != 0 || limit == 0)
        return ready;
    ++VirtualTime::waits;
    if (!limit) {
        VirtualTime::waitedForever = true;
        limit = billion;
    }
    VirtualTime::now += *limit + VirtualTime::lateness;
    return 0;
}

} // namespace

// These replace the C library's functions for this program and the libraries in it.

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (!VirtualTime::isOn || clock != CLOCK_MONOTONIC)
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    *time = fields(VirtualTime::now);
    return 0;
}

extern "C" int poll(pollfd* files, nfds_t count, int milliseconds) {
    constexpr std::int64_t million = 1'000'000;
    return wait(files, count, milliseconds < 0 ? std::nullopt : std::optional(milliseconds * million), nullptr);
}

extern "C" int ppoll(pollfd* files, nfds_t count, const timespec* limit, const sigset_t* mask) {
    return wait(files, count, limit != nullptr ? std::optional(limit->tv_sec * billion + limit->tv_nsec) : std::nullopt,
                mask);
}

namespace {

/// Qt's own event loop and timers, in virtual time.
struct QtMainLoopTest : ::testing::Test {
    VirtualTime time;
    QtMainLoop loop;
    std::vector<double> ticks; ///< seconds after the start
    std::unique_ptr<MainLoop::Timer> timer;

    static double now() { return static_cast<double>(VirtualTime::now - 1000 * billion) / billion; }
    static void take(double seconds) { VirtualTime::now += static_cast<std::int64_t>(seconds * billion); }

    /// Runs the program's minute timer until it has fired `count` times; `seconds` is how long each task takes.
    void minutes(std::size_t count, const std::function<double(std::size_t)>& seconds) {
        QEventLoop events;
        timer = loop.repeat(60s, 10s, [&] {
            ticks.push_back(now());
            take(seconds(ticks.size()));
            if (ticks.size() == count)
                events.quit();
        });
        events.exec();
        timer.reset();
        ASSERT_FALSE(VirtualTime::waitedForever);
    }
};

} // namespace

TEST_F(QtMainLoopTest, TheMinutesOfADayDoNotAddUpTheirDelays) {
    VirtualTime::lateness = 50'000'000;
    minutes(1440, [](std::size_t) { return 0.3; });
    ASSERT_EQ(ticks.size(), 1440U);
    for (std::size_t i = 0; i < ticks.size(); ++i)
        ASSERT_NEAR(ticks[i], static_cast<double>(i + 1) * 60, 1) << i; // Qt fires on whole seconds of the clock
    EXPECT_NEAR(ticks.back() - ticks.front(), 1439 * 60, 0.1);
    EXPECT_LE(VirtualTime::waits, 1500) << "nothing wakes it in between";
}

TEST_F(QtMainLoopTest, MinutesThatWereMissedDoNotComeAllAtOnce) {
    minutes(20, [](std::size_t tick) { return tick == 5 ? 200.0 : 0.0; });
    for (std::size_t i = 1; i < ticks.size(); ++i)
        EXPECT_GT(ticks[i] - ticks[i - 1], i == 6 ? 0 : 10) << i;
    EXPECT_LE(ticks.back(), 21 * 60 + 200);
}

TEST_F(QtMainLoopTest, WhatIsPutOffComesAtItsTimeAndInItsOrder) {
    QEventLoop events;
    std::vector<std::pair<int, double>> done;
    loop.after(3s, [&] {
        done.emplace_back(3, now());
        events.quit();
    });
    loop.after(1s, [&] { done.emplace_back(2, now()); });
    loop.async([&] { done.emplace_back(1, now()); });
    EXPECT_TRUE(done.empty()) << "never at once";
    events.exec();
    ASSERT_EQ(done.size(), 3U);
    EXPECT_EQ(done[0], std::pair(1, 0.0));
    EXPECT_EQ(done[1].first, 2);
    EXPECT_NEAR(done[1].second, 1, 0.01);
    EXPECT_EQ(done[2].first, 3);
    EXPECT_NEAR(done[2].second, 3, 0.01);
}

TEST_F(QtMainLoopTest, AnEndedTimerIsSilent) {
    minutes(1, [](std::size_t) { return 0.0; });
    QEventLoop events;
    loop.after(300s, [&] { events.quit(); });
    events.exec();
    EXPECT_EQ(ticks.size(), 1U);
}
