// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/SavePortal.h"

#include <algorithm>
#include <array>
#include <charconv>

SaveAnswer saveAnswer(std::uint32_t response, const std::optional<std::filesystem::path>& file,
                      std::chrono::milliseconds after) {
    constexpr std::uint32_t done = 0;
    constexpr std::uint32_t endedOtherwise = 2;
    constexpr std::chrono::milliseconds tooQuick(500); // for a person, who has to see the dialog before closing it
    // QUIRK: GTK's dialog sends this when Esc or the window's close button ends it. A portal also sends it, at once,
    // when the program that should show the dialog cannot be started.
    if (response >= endedOtherwise && after < tooQuick)
        return {.outcome = SaveAnswer::Outcome::failed, .file = {}};
    if (response != done || !file)
        return {};
    return {.outcome = SaveAnswer::Outcome::chosen, .file = *file};
}

std::string portalRequestPath(std::string_view uniqueName, std::string_view token) {
    std::string sender(uniqueName.substr(uniqueName.starts_with(':') ? 1 : 0));
    std::replace(sender.begin(), sender.end(), '.', '_');
    return "/org/freedesktop/portal/desktop/request/" + sender + '/' + std::string(token);
}

std::string portalParentWindow(std::string_view platform, std::uint64_t window) {
    if (platform != "xcb" || window == 0)
        return {};
    std::array<char, 16> digits{};
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), window, 16).ptr;
    return "x11:" + std::string(digits.data(), end);
}
