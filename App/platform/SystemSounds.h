// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

/// Short sounds by name. No sound device and an unknown name are silence, not errors.
class SystemSounds {
public:
    virtual ~SystemSounds() = default;

    /// Plays the sound of this name once, from the start; it does not wait for its end.
    virtual void play(std::string_view name) = 0;

    /// Plays the desktop's own message sound once.
    virtual void playDefault() = 0;
};
