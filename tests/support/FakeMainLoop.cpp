// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeMainLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace {

class FakeTimer final : public MainLoop::Timer {
public:
    explicit FakeTimer(std::shared_ptr<FakeMainLoop::Repetition> repetition) : repetition_(std::move(repetition)) {}
    ~FakeTimer() override { repetition_->isAlive = false; }
    FakeTimer(const FakeTimer&) = delete;
    FakeTimer& operator=(const FakeTimer&) = delete;

private:
    std::shared_ptr<FakeMainLoop::Repetition> repetition_;
};

} // namespace

void FakeMainLoop::after(Duration delay, Task task) {
    queue_.emplace(clock_.steady() + std::max<std::int64_t>(0, FakeClock::nanoseconds(delay)), std::move(task));
}

std::unique_ptr<MainLoop::Timer> FakeMainLoop::repeat(Duration interval, Duration tolerance, Task task) {
    note(journal_, "timer");
    auto repetition =
        std::make_shared<Repetition>(Repetition{.interval = interval, .tolerance = tolerance, .task = std::move(task)});
    repetitions.push_back(repetition);
    scheduleRepetition(repetition, clock_.steady() + FakeClock::nanoseconds(interval));
    return std::make_unique<FakeTimer>(std::move(repetition));
}

void FakeMainLoop::scheduleRepetition(const std::shared_ptr<Repetition>& repetition, std::int64_t due) {
    const auto late = FakeClock::nanoseconds(std::min(lateness, repetition->tolerance));
    queue_.emplace(due + late, [this, repetition, due] {
        if (!repetition->isAlive)
            return;
        scheduleRepetition(repetition, due + FakeClock::nanoseconds(repetition->interval));
        repetition->task();
    });
}

void FakeMainLoop::advance(Duration time) {
    constexpr int mostTurns = 1'000'000;
    const std::int64_t end = clock_.steady() + FakeClock::nanoseconds(time);
    const auto passUntil = [this](std::int64_t instant) {
        // A task may itself have moved the clock.
        if (instant > clock_.steady())
            clock_.pass(Duration(static_cast<double>(instant - clock_.steady()) / 1e9));
    };
    for (int turn = 0; !queue_.empty() && queue_.begin()->first <= end; ++turn) {
        if (turn == mostTurns) {
            ADD_FAILURE() << "the main loop does not come to rest";
            return;
        }
        const auto next = queue_.extract(queue_.begin());
        passUntil(next.key());
        next.mapped()();
    }
    passUntil(end);
}
