// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <functional>
#include <memory>

/// The loop that everything runs on. Intervals are measured with a steady clock.
class MainLoop {
public:
    virtual ~MainLoop() = default;
    using Task = std::function<void()>;

    /// A repeating timer; it fires until it is destroyed.
    class Timer {
    public:
        virtual ~Timer() = default;
    };

    /// Runs `task` on a later turn of the loop; may be called from any thread.
    virtual void async(Task task) = 0;

    /// Runs `task` once after `delay`.
    virtual void after(Duration delay, Task task) = 0;

    /// Runs `task` every `interval`, each time up to `tolerance` late, so that the system can bundle wake-ups.
    [[nodiscard]] virtual std::unique_ptr<Timer> repeat(Duration interval, Duration tolerance, Task task) = 0;

    /// Whether the calling thread is the one that runs the loop.
    virtual bool isMainThread() const = 0;
};
