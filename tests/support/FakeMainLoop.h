// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainLoop.h"
#include "support/FakeClock.h"
#include "support/FakeJournal.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

/// A main loop in virtual time: `advance` runs what becomes due, in the order of the instants, each at its instant.
class FakeMainLoop final : public MainLoop {
public:
    explicit FakeMainLoop(FakeClock& clock, FakeJournal* journal = nullptr) : clock_(clock), journal_(journal) {}

    /// A repeating timer that was asked for, even if it has been destroyed since.
    struct Repetition {
        Duration interval{};
        Duration tolerance{};
        Task task;
        bool isAlive = true;
    };

    bool mainThread = true;                               ///< the answer of `isMainThread`
    Duration lateness{};                                  ///< how late timers fire, as far as they tolerate it
    std::vector<std::shared_ptr<Repetition>> repetitions; ///< every timer ever asked for

    void async(Task task) override { after(Duration(0), std::move(task)); }
    void after(Duration delay, Task task) override;
    [[nodiscard]] std::unique_ptr<Timer> repeat(Duration interval, Duration tolerance, Task task) override;
    bool isMainThread() const override { return mainThread; }

    /// Lets time pass and runs the tasks and timers that become due.
    void advance(Duration time);

    /// Runs everything due now, including tasks that those put off to later turns at the same instant.
    void runDue() { advance(Duration(0)); }

    /// How many tasks and timers wait.
    std::size_t waiting() const { return queue_.size(); }

private:
    FakeClock& clock_;
    FakeJournal* journal_;
    std::multimap<std::int64_t, Task> queue_; ///< by the steady instant; equal ones stay in their order

    void scheduleRepetition(const std::shared_ptr<Repetition>& repetition, std::int64_t due);
};
