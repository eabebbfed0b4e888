// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <map>
#include <string>

/// An audio output for one sound. Its calls may block for as long as the sound server takes, so they are made only by a
/// thread that has nothing else to do.
class SoundOutput {
public:
    /// What to play and how to describe it, by the sound servers' property names.
    using Properties = std::map<std::string, std::string>;

    enum class Result {
        Playing,
        NotFound, ///< there is no such sound; another one may be tried
        Failed,   ///< there is no server, no device, or no connection to them
    };

    /// Ends the sound; `finished` is not called afterwards.
    virtual ~SoundOutput() = default;

    /// Starts the sound. When it plays, `finished` is called once at its end, on any thread.
    virtual Result play(const Properties& properties, std::function<void()> finished) = 0;
};
