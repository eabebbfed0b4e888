// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "battery/BatteryState.h"

#include <string>

struct Prefs;

/// The text beside the icon, "80% · 1:45", with the parts that the preferences ask for; empty for the icon alone.
std::string statusItemText(const BatteryState& state, const Prefs& prefs);

/// The title of the item: the text, set off from the icon by a space; empty for the icon alone.
std::string statusItemTitle(const BatteryState& state, const Prefs& prefs);

/// The widest title that these preferences can give, so that the panel can keep the item's width constant.
std::string widestStatusItemTitle(const Prefs& prefs);

/// The name of the glyph that shows a number, the level and the meaning of the first symbol name. The number is the
/// percentage, "percent.80.bolt", or if the preferences do not ask for that, the remaining time: "time.1:45.80.bolt".
/// There is no room for both. Empty without a battery, and when there is neither.
std::string numberSymbol(const BatteryState& state, const Prefs& prefs);

/// The tooltip: what the battery is doing, its health, its cycles; one line each, joined with a line feed.
std::string statusItemToolTip(const BatteryState& state);
