// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// What became of the question to the desktop's file chooser portal for a file to save to.
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

/// Where the portal has the request of a connection (":1.42") that has named it by this token.
std::string portalRequestPath(std::string_view uniqueName, std::string_view token);

/// The window that the desktop's dialog stands before, in the portal's words. Only X11 has a name for it that can be
/// told to others; `platform` is Qt's word for where its windows are.
std::string portalParentWindow(std::string_view platform, std::uint64_t window);
