// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

using Duration = std::chrono::duration<double>;                    ///< seconds
using Date = std::chrono::sys_time<std::chrono::duration<double>>; ///< wall-clock instant, seconds since 1970

/// The time. The whole program reads it from here.
class Clock {
public:
    virtual ~Clock() = default;

    /// Wall-clock time; it may jump forwards or backwards when somebody sets the clock.
    virtual Date now() const = 0;

    /// Seconds since the machine started, sleep included; never goes back.
    virtual Duration uptime() const = 0;

    /// Seconds of `uptime()` that the machine has slept; it grows exactly when the machine was suspended.
    virtual Duration slept() const = 0;
};
