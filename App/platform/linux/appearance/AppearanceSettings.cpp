// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/AppearanceSettings.h"

#include "platform/linux/files/AsciiLower.h"

#include <algorithm>
#include <charconv>

namespace {

void trimEnd(std::string_view& text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == ','))
        text.remove_suffix(1);
}

/// Removes the last word of a text and returns it.
std::string_view takeLastWord(std::string_view& text) {
    const std::size_t space = text.find_last_of(' ');
    const std::size_t start = space == std::string_view::npos ? 0 : space + 1;
    const std::string_view word = text.substr(start);
    text = text.substr(0, start);
    trimEnd(text);
    return word;
}

bool isStyle(std::string_view word) {
    // The style words of Pango's font descriptions, which the desktops use.
    constexpr std::array styles{"thin",       "ultra-light", "light",    "semi-light",     "book",
                                "regular",    "normal",      "medium",   "semi-bold",      "bold",
                                "ultra-bold", "heavy",       "black",    "italic",         "oblique",
                                "roman",      "condensed",   "expanded", "semi-condensed", "semi-expanded"};
    const std::string lower = asciiLower(word);
    return std::find(styles.begin(), styles.end(), lower) != styles.end();
}

std::optional<Appearance::Font> fontOf(std::string_view description, double scale) {
    constexpr double smallest = 4; // points; a size outside these limits is a typing error
    constexpr double largest = 72;
    trimEnd(description);
    Appearance::Font font;
    std::string_view rest = description;
    const std::string_view last = takeLastWord(rest);
    double points = 0;
    const auto [end, error] = std::from_chars(last.data(), last.data() + last.size(), points);
    if (error == std::errc() && end == last.data() + last.size() && !rest.empty()) {
        if (points * scale >= smallest && points * scale <= largest)
            font.points = points * scale;
        description = rest;
    }
    for (rest = description; !rest.empty();) {
        if (!isStyle(takeLastWord(rest)) || rest.empty())
            break;
        description = rest;
    }
    if (description.empty())
        return std::nullopt;
    font.family = description;
    return font;
}

/// "HighContrast" and "HighContrastInverse" of GTK, "ContrastHigh" and "ContrastHighInverse" of MATE.
bool isHighContrastTheme(std::string_view name) {
    const std::string theme = asciiLower(name);
    return theme.starts_with("highcontrast") || theme.starts_with("contrasthigh");
}

/// Theme names are arbitrary; dark ones have the word "dark" in common, mostly at the end. "Arc-Darker" is a light
/// theme with dark title bars.
bool isDarkTheme(std::string_view name) {
    const std::string theme = asciiLower(name);
    if (theme.ends_with("dark") || (isHighContrastTheme(name) && theme.ends_with("inverse")))
        return true;
    for (std::size_t start = 0; start < theme.size();) {
        const std::size_t end = std::min(theme.find_first_of("-_ ", start), theme.size());
        if (theme.substr(start, end - start) == "dark")
            return true;
        start = end + 1;
    }
    return false;
}

bool names(std::string_view desktops, std::string_view wanted) {
    const std::string all = ':' + asciiLower(desktops) + ':';
    return all.find(':' + std::string(wanted) + ':') != std::string::npos;
}

} // namespace

Appearance appearanceOf(const DesktopSettings& settings, const XfceSettings& xfce) {
    Appearance appearance;
    const std::uint32_t scheme = settings.colorScheme.value_or(0);
    const auto& theme = xfce.themeName ? xfce.themeName : settings.themeName;
    if (scheme == 1 || scheme == 2)
        appearance.isDark = scheme == 1;
    else if (theme)
        appearance.isDark = isDarkTheme(*theme);
    appearance.hasHighContrast = settings.contrast == 1U || (theme && isHighContrastTheme(*theme));
    if (const auto& accent = settings.accentColor;
        accent && std::all_of(accent->begin(), accent->end(), [](double part) { return part >= 0 && part <= 1; }))
        appearance.accent = accent;
    if (xfce.fontName) { // the scale applies to the portal's font; Xfce sets the screen's resolution instead
        appearance.font = fontOf(*xfce.fontName, 1);
    } else if (settings.fontName) {
        const double scale = settings.textScale.value_or(1);
        appearance.font = fontOf(*settings.fontName, scale >= 0.5 && scale <= 3 ? scale : 1);
    }
    return appearance;
}

bool refusesQtPlatformTheme(std::string_view desktops, std::string_view userChoice) {
    constexpr std::array gtk{"gnome", "x-cinnamon", "pantheon", "unity", "mate", "xfce", "lxde"};
    return userChoice.empty() &&
           std::any_of(gtk.begin(), gtk.end(), [&](const char* name) { return names(desktops, name); });
}

bool followsPortal(std::string_view desktops, std::string_view userChoice) {
    return userChoice.empty() && !names(desktops, "kde") && !names(desktops, "lxqt");
}

bool followsKde(std::string_view desktops, std::string_view userChoice) {
    return names(desktops, "kde") && (userChoice.empty() || userChoice == "kde");
}

bool isXfce(std::string_view desktops) {
    return names(desktops, "xfce");
}
