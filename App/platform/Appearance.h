// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <string>

/// How the desktop wants windows to look; empty for what it leaves to Qt.
struct Appearance {
    /// A font, without its style: what is bold is for the views to say.
    struct Font {
        std::string family;
        double points = 0; ///< 0 for Qt's own size
        bool operator==(const Font&) const = default;
    };

    std::optional<bool> isDark;
    std::optional<std::array<double, 3>> accent; ///< red, green, blue from 0 to 1
    std::optional<Font> font;
    bool operator==(const Appearance&) const = default;
};
