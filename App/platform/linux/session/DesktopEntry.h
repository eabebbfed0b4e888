// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a desktop entry says: the keys of its group "Desktop Entry". The format is that of the Desktop Entry
/// Specification 1.5; where that is silent, as GLib reads it.
class DesktopEntry {
public:
    /// Empty for anything that is not wholly of the format, because desktops do not agree on what is left of it then.
    static std::optional<DesktopEntry> parse(std::string_view text);

    /// Empty when there is no such key, or when there are escapes in its value that do not exist. Translations are keys
    /// of their own: "Name[de]".
    std::optional<std::string> string(std::string_view key) const;

    /// Empty also when it is neither true nor false.
    std::optional<bool> boolean(std::string_view key) const;

    /// The words of a command line, without what would be filled in for files and the like; none when it is missing or
    /// malformed.
    std::vector<std::string> command(std::string_view key) const;

private:
    std::map<std::string, std::string, std::less<>> values_; ///< as they stand in the file
};

/// Whether a text can be a value, or part of one: UTF-8 without control characters that have no escape.
bool canBeDesktopEntryValue(std::string_view text);

/// A text as the value of a key, with escapes where it needs them.
std::string desktopEntryValue(std::string_view text);

/// A word of a command line, quoted so that it stays one whatever is in it. The line itself becomes a value in turn.
std::string desktopEntryArgument(std::string_view word);
