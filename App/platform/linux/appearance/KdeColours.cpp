// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/KdeColours.h"

#include <charconv>
#include <cstddef>

namespace {

/// The value of a key below the heading of a group; empty if there is none.
std::string_view value(std::string_view file, std::string_view group, std::string_view key) {
    bool isInGroup = false;
    while (!file.empty()) {
        const std::size_t end = file.find('\n');
        const std::string_view line = file.substr(0, end);
        file.remove_prefix(end == std::string_view::npos ? file.size() : end + 1);
        if (line.starts_with('['))
            isInGroup = line == group;
        else if (isInGroup && line.starts_with(key) && line.substr(key.size()).starts_with('='))
            return line.substr(key.size() + 1);
    }
    return {};
}

/// "35,38,41"
std::optional<Appearance::Colour> colour(std::string_view text) {
    Appearance::Colour colour{};
    const char* at = text.data();
    const char* const end = text.data() + text.size();
    for (std::size_t part = 0; part < colour.size(); ++part) {
        if (part > 0 && (at == end || *at++ != ','))
            return std::nullopt;
        const auto [next, error] = std::from_chars(at, end, colour[part]);
        if (error != std::errc())
            return std::nullopt;
        at = next;
    }
    return at == end ? std::optional(colour) : std::nullopt;
}

} // namespace

std::optional<Appearance::Colours> kdeColours(std::string_view file) {
    const auto background = [&](const char* group) { return colour(value(file, group, "BackgroundNormal")); };
    const auto foreground = [&](const char* group) { return colour(value(file, group, "ForegroundNormal")); };
    constexpr const char* window = "[Colors:Window]";
    constexpr const char* view = "[Colors:View]";
    constexpr const char* button = "[Colors:Button]";
    constexpr const char* selection = "[Colors:Selection]";
    for (const char* group : {window, view, button, selection}) {
        if (!background(group) || !foreground(group))
            return std::nullopt;
    }
    return Appearance::Colours{.window = *background(window),
                               .windowText = *foreground(window),
                               .base = *background(view),
                               .text = *foreground(view),
                               .button = *background(button),
                               .buttonText = *foreground(button),
                               .highlight = *background(selection),
                               .highlightedText = *foreground(selection)};
}
