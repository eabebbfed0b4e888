// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Appearance.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// How a desktop says that its windows look, as it sends it; empty for what it does not say.
struct DesktopSettings {
    std::optional<std::uint32_t> colorScheme;         ///< 1 dark, 2 light, anything else no preference
    std::optional<std::array<double, 3>> accentColor; ///< red, green, blue from 0 to 1; outside of that, none
    std::optional<std::string> fontName;              ///< "Cantarell Bold 11"
    std::optional<double> textScale;                  ///< 1 for the font as it is
    std::optional<std::string> themeName;             ///< of the older desktops: "Adwaita-dark"
};

/// What Xfce says of its windows, in its own settings; its portal has the settings of another desktop, which nobody
/// sets.
struct XfceSettings {
    std::optional<std::string> themeName; ///< "Greybird-dark"
    std::optional<std::string> fontName;  ///< "Sans 10"
};

/// What Xfce says comes before what the portal passes on of older settings, but not before what the portal says itself.
Appearance appearanceOf(const DesktopSettings& settings, const XfceSettings& xfce = {});

/// Whether Qt is kept from looking for a plugin for this desktop (the names in XDG_CURRENT_DESKTOP, separated
/// by colons): on these it would find the one that brings the whole GTK into the process. What the user has chosen by
/// QT_QPA_PLATFORMTHEME comes first.
bool refusesQtPlatformTheme(std::string_view desktops, std::string_view userChoice);

/// Whether the look comes from the desktop's portal: where Qt does not know it by itself, and the user has not
/// chosen another.
bool followsPortal(std::string_view desktops, std::string_view userChoice);

/// Whether this desktop keeps its look in Xfce's settings.
bool isXfce(std::string_view desktops);
