// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>
#include <vector>

/// How to ask a notification daemon whether the user wants to be left alone. GNOME, MATE and LXQt do not tell over
/// D-Bus.
enum class DoNotDisturbSource {
    inhibited, ///< the property that Plasma has and others may get; a daemon without it refuses the call
    dunst,     ///< "paused"
    xfconf,    ///< Xfce's settings service
    mako,      ///< a mode, by the name that mako's manual suggests
};

/// The method call whose answer tells.
struct DoNotDisturbQuestion {
    std::string_view service; ///< empty: the daemon itself
    std::string_view path;
    std::string_view interface;
    std::string_view method;
    std::vector<std::string_view> arguments;
    std::string_view mode;       ///< on if the answer, a list, contains this; empty: the answer is a boolean
    std::string_view refusedOff; ///< the error that means "off"; empty: an error means unknown
};

/// Which of these a daemon of this name has.
DoNotDisturbSource doNotDisturbSource(std::string_view serverName);

/// The call to make for it.
DoNotDisturbQuestion doNotDisturbQuestion(DoNotDisturbSource source);
