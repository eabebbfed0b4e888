// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/sound/SoundThread.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto longestSound = 10s; // our own are shorter than 2 s; a theme's may have any length
constexpr auto longestEnd = 200ms; // ending a sound takes a few milliseconds if the server answers

} // namespace

/// Shared with the thread, which may outlive its owner.
struct SoundThread::State {
    MakeOutput makeOutput;

    std::mutex mutex; ///< guards all that follows; not held while an output is called
    std::condition_variable changed;
    std::optional<Choices> next;
    bool running = false;  ///< whether there is a thread
    bool finished = false; ///< whether the sound has come to its end
    bool ending = false;   ///< whether the owner is gone

    void run();
    bool start(SoundOutput& output, const Choices& choices);
};

void SoundThread::State::run() {
    std::unique_lock lock(mutex);
    while (next) {
        const Choices choices = std::move(*std::exchange(next, std::nullopt));
        finished = false;
        lock.unlock();
        std::unique_ptr<SoundOutput> output = makeOutput();
        const bool playing = start(*output, choices);
        lock.lock();
        if (playing)
            changed.wait_for(lock, longestSound, [this] { return finished || next || ending; });
        lock.unlock();
        output.reset();
        lock.lock();
    }
    running = false;
    changed.notify_all();
}

bool SoundThread::State::start(SoundOutput& output, const Choices& choices) {
    auto result = SoundOutput::Result::NotFound;
    for (auto choice = choices.begin(); choice != choices.end() && result == SoundOutput::Result::NotFound; ++choice) {
        result = output.play(*choice, [this] {
            const std::lock_guard lock(mutex);
            finished = true;
            changed.notify_all();
        });
    }
    return result == SoundOutput::Result::Playing;
}

SoundThread::SoundThread(MakeOutput makeOutput) : state_(std::make_shared<State>()) {
    state_->makeOutput = std::move(makeOutput);
}

SoundThread::~SoundThread() {
    std::unique_lock lock(state_->mutex);
    state_->ending = true;
    state_->next.reset();
    state_->changed.notify_all();
    state_->changed.wait_for(lock, longestEnd, [this] { return !state_->running; });
}

void SoundThread::play(Choices choices) {
    const std::lock_guard lock(state_->mutex);
    state_->next = std::move(choices);
    state_->changed.notify_all();
    if (state_->running)
        return;
    try {
        std::thread([state = state_] { state->run(); }).detach();
        state_->running = true;
    } catch (const std::system_error&) { // no more threads: silence
        state_->next.reset();
    }
}
