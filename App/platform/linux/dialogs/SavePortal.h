// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// The outcome of asking the file chooser portal for a file to save to.
struct SaveAnswer {
    /// `failed`: the user was not asked.
    enum class Outcome { chosen, cancelled, failed };

    Outcome outcome = Outcome::cancelled;
    std::filesystem::path file; ///< only when one was chosen
    bool operator==(const SaveAnswer&) const = default;
};

/// The answer that the portal sends: a response code, and a file if it names one of this machine. `after` is how long
/// the answer took once the portal had accepted the question.
SaveAnswer saveAnswer(std::uint32_t response, const std::optional<std::filesystem::path>& file,
                      std::chrono::milliseconds after);

/// The object path that the portal gives a request with this token from a connection (":1.42").
std::string portalRequestPath(std::string_view uniqueName, std::string_view token);

/// The parent window of the desktop's dialog, as the portal names it. Only X11 windows have a name that other processes
/// understand; `platform` is the name of Qt's platform plugin.
std::string portalParentWindow(std::string_view platform, std::uint64_t window);
