// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>
#include <vector>

/// How the daemons that show notifications are asked whether the user wants to be left alone. GNOME, MATE and LXQt do
/// not tell it over the bus.
enum class DoNotDisturbSource {
    inhibited, ///< the property that Plasma has, and that others may get; without it the call is refused
    dunst,     ///< "paused"
    xfconf,    ///< Xfce's settings service
    mako,      ///< a mode; the daemon's manual suggests its name
};

/// A method call whose answer tells it.
struct DoNotDisturbQuestion {
    std::string_view service; ///< empty: the daemon itself
    std::string_view path;
    std::string_view interface;
    std::string_view method;
    std::vector<std::string_view> arguments;
    std::string_view mode;       ///< the answer is a list, and this is in it; empty: the answer is a boolean
    std::string_view refusedOff; ///< the error that means "off"; empty: an error tells nothing
};

/// Where a daemon of this name has it.
DoNotDisturbSource doNotDisturbSource(std::string_view serverName);

/// What is to be asked there.
DoNotDisturbQuestion doNotDisturbQuestion(DoNotDisturbSource source);
