// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Appearance.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// A desktop's appearance settings, as it sends them; empty for those that it does not send.
struct DesktopSettings {
    std::optional<std::uint32_t> colorScheme;         ///< 1 dark, 2 light, anything else no preference
    std::optional<std::array<double, 3>> accentColor; ///< red, green, blue from 0 to 1; anything outside means none
    std::optional<std::uint32_t> contrast;            ///< 1 higher, anything else no preference
    std::optional<std::string> fontName;              ///< "Cantarell Bold 11"
    std::optional<double> textScale;                  ///< 1 for the unscaled font
    std::optional<std::string> themeName;             ///< on older desktops: "Adwaita-dark"
};

/// Xfce's appearance settings, from its own service; its portal gives those of another desktop, which nobody sets.
struct XfceSettings {
    std::optional<std::string> themeName; ///< "Greybird-dark"
    std::optional<std::string> fontName;  ///< "Sans 10"
};

/// Combines both. Xfce's settings override older settings that the portal passes on, but not the portal's own.
Appearance appearanceOf(const DesktopSettings& settings, const XfceSettings& xfce = {});

/// Whether to keep Qt from looking for a platform theme for this desktop (the names in XDG_CURRENT_DESKTOP, separated
/// by colons): on these desktops it would find the one that loads all of GTK into the process. The user's choice in
/// QT_QPA_PLATFORMTHEME takes precedence.
bool refusesQtPlatformTheme(std::string_view desktops, std::string_view userChoice);

/// Whether to take the appearance from the desktop's portal: where Qt does not know it by itself, and the user has not
/// chosen another.
bool followsPortal(std::string_view desktops, std::string_view userChoice);

/// Whether to take changes of the colours from Plasma: Qt reads its colours, but at the start only.
bool followsKde(std::string_view desktops, std::string_view userChoice);

/// Whether this desktop keeps its appearance in Xfce's settings.
bool isXfce(std::string_view desktops);
