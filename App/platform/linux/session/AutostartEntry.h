// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// A desktop entry in an "autostart" folder (Desktop Application Autostart Specification 0.5).
struct AutostartEntry {
    std::filesystem::path program;                ///< what it starts
    std::optional<std::filesystem::path> tryExec; ///< if this is missing, nothing is started
    bool isOn = true;                             ///< false for an entry that says that nothing is to be started
    bool operator==(const AutostartEntry&) const = default;

    /// Empty if not every desktop would start something for it.
    static std::optional<AutostartEntry> parse(std::string_view text);

    /// Whether the entry starts the program, or says that it is not to be started.
    enum class Switch { on, off };

    /// The content of the entry. Empty if one of the paths has characters that an entry cannot hold.
    static std::optional<std::string> text(const std::filesystem::path& program, const std::filesystem::path& icon,
                                           Switch state);
};
