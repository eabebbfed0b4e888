// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/sound/SoundOutput.h"

#include <functional>
#include <memory>
#include <vector>

/// Plays one sound at a time on a thread of its own, because a sound server may block its callers: one that hangs does
/// so for half a minute. The thread and the connection to the server exist only while there is something to play.
class SoundThread {
public:
    /// Creates the output for one sound; called on that thread.
    using MakeOutput = std::function<std::unique_ptr<SoundOutput>()>;

    /// Alternatives: the first sound that is found is played.
    using Choices = std::vector<SoundOutput::Properties>;

    explicit SoundThread(MakeOutput makeOutput);

    /// Ends the sound. A thread that its server blocks is left behind: it must not keep the program from ending.
    ~SoundThread();
    SoundThread(const SoundThread&) = delete;
    SoundThread& operator=(const SoundThread&) = delete;

    /// Plays the sound in place of one that is playing or waiting to be played.
    void play(Choices choices);

private:
    struct State;
    std::shared_ptr<State> state_;
};
