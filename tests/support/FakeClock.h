// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <cmath>
#include <cstdint>

/// Time that stands still until a test moves it. `FakeMainLoop::advance` moves it and also runs tasks and timers that
/// become due.
class FakeClock final : public Clock {
public:
    /// By default a machine that has been up for a while, in November 2023.
    explicit FakeClock(Date now = Date(Duration(1'700'000'000)), Duration uptime = Duration(5'000))
        : wallAtStart_(now)
        , uptimeAtStart_(uptime) {}

    Date now() const override { return wallAtStart_ + seconds(awake_ + asleep_); }
    Duration uptime() const override { return uptimeAtStart_ + seconds(awake_ + asleep_); }
    Duration slept() const override { return seconds(asleep_); }

    /// Time passes while the machine is awake; tasks and timers that become due do not run.
    void pass(Duration time) { awake_ += nanoseconds(time); }

    /// The machine is suspended for that time; timers in the main loop do not count it.
    void suspend(Duration time) { asleep_ += nanoseconds(time); }

    /// The wall clock is set.
    void setNow(Date now) { wallAtStart_ = now - seconds(awake_ + asleep_); }

    /// The main loop's time: nanoseconds awake, as integers so that sums are exact.
    std::int64_t steady() const { return awake_; }

    static std::int64_t nanoseconds(Duration time) { return std::llround(time.count() * 1e9); }

private:
    Date wallAtStart_;
    Duration uptimeAtStart_;
    std::int64_t awake_ = 0;
    std::int64_t asleep_ = 0;

    static Duration seconds(std::int64_t nanoseconds) { return Duration(static_cast<double>(nanoseconds) / 1e9); }
};
