// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

/// Short sounds by name. A missing sound device or an unknown name means silence, not an error.
class SystemSounds {
public:
    virtual ~SystemSounds() = default;

    /// Plays the sound of this name once, from the start, without waiting for its end.
    virtual void play(std::string_view name) = 0;

    /// Plays the desktop's own message sound once.
    virtual void playDefault() = 0;
};
