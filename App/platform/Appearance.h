// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

/// How the desktop wants windows to look. A field is empty where the desktop leaves it to Qt.
struct Appearance {
    /// A font's family and size. Its style is left out: the views decide what is bold.
    struct Font {
        std::string family;
        double points = 0; ///< 0 for Qt's own size
        bool operator==(const Font&) const = default;
    };

    /// Red, green and blue.
    using Colour = std::array<std::uint8_t, 3>;

    /// A whole scheme, as some desktops tell it.
    struct Colours {
        Colour window, windowText; ///< dialogs
        Colour base, text;         ///< lists and text fields
        Colour button, buttonText;
        Colour highlight, highlightedText; ///< what is chosen
        bool operator==(const Colours&) const = default;
    };

    std::optional<bool> isDark;
    std::optional<std::array<double, 3>> accent; ///< red, green, blue from 0 to 1
    std::optional<Font> font;
    std::optional<Colours> colours = std::nullopt; ///< where these are told, the first two are of no account
    bool hasHighContrast = false;                  ///< whether everything has to stand out more than usual
    bool operator==(const Appearance&) const = default;
};
