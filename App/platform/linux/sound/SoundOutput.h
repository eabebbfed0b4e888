// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <map>
#include <string>

/// A way to the loudspeaker for one sound. Its calls may take as long as the sound server lets them wait: no thread
/// that has anything else to do makes them.
class SoundOutput {
public:
    /// What to play and as what, by the names that sound servers have for it.
    using Properties = std::map<std::string, std::string>;

    enum class Result {
        Playing,
        NotFound, ///< there is no such sound; another one may be tried
        Failed,   ///< there is no server, no device, or no way to them
    };

    /// Ends the sound; nothing is called afterwards.
    virtual ~SoundOutput() = default;

    /// Starts the sound. When it plays, `finished` is called once at its end, on any thread.
    virtual Result play(const Properties& properties, std::function<void()> finished) = 0;
};
