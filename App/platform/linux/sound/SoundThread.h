// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/sound/SoundOutput.h"

#include <functional>
#include <memory>
#include <vector>

/// Plays one sound at a time on a thread of its own, because a sound server may let its callers wait: one that hangs
/// does so for half a minute. The thread and the way to the server are there only while there is something to play.
class SoundThread {
public:
    /// Makes the way to the loudspeaker for one sound, on that thread.
    using MakeOutput = std::function<std::unique_ptr<SoundOutput>()>;

    /// Sounds of which the first is played that is found.
    using Choices = std::vector<SoundOutput::Properties>;

    explicit SoundThread(MakeOutput makeOutput);

    /// Ends the sound. A thread that is kept waiting by its server is left behind: it must not keep the program.
    ~SoundThread();
    SoundThread(const SoundThread&) = delete;
    SoundThread& operator=(const SoundThread&) = delete;

    /// Plays the sound, instead of one that is playing or waiting to be played.
    void play(Choices choices);

private:
    struct State;
    std::shared_ptr<State> state_;
};
