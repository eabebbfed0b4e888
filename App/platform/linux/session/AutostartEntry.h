// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// A desktop entry in a folder "autostart": what the session starts with (Desktop Application Autostart Specification
/// 0.5).
struct AutostartEntry {
    std::filesystem::path program;                ///< what it starts
    std::optional<std::filesystem::path> tryExec; ///< what has to be there, or nothing is started
    bool isOn = true;                             ///< false when it is there to say that nothing is to be started
    bool operator==(const AutostartEntry&) const = default;

    /// Empty when no desktop, or not every one, starts something by it.
    static std::optional<AutostartEntry> parse(std::string_view text);

    /// Whether the entry starts the program, or says that it is not to be started.
    enum class Switch { on, off };

    /// The content of the entry that starts the program, or says that it is not to be started. Empty when there are
    /// characters in one of the paths that an entry cannot hold.
    static std::optional<std::string> text(const std::filesystem::path& program, const std::filesystem::path& icon,
                                           Switch state);
};
