// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/DesktopEntry.h"

#include "platform/linux/files/Utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace {

constexpr std::string_view mainGroup = "Desktop Entry";
constexpr std::string_view blanks = " \t\r\f"; // what GLib takes for space in a line

// After the backslash, and what it stands for.
constexpr std::array<std::pair<char, char>, 5> escapes{
    {{'s', ' '}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}, {'\\', '\\'}}};

bool isControl(char c) {
    return (static_cast<unsigned char>(c) < 0x20) || c == 0x7F;
}

std::string_view withoutLeading(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

std::string_view withoutTrailing(std::string_view text) {
    return text.substr(0, text.find_last_not_of(blanks) + 1); // npos + 1 is 0
}

/// "Name", "X-Name" or "Name[de_DE.UTF-8@euro]".
bool isKey(std::string_view text) {
    const auto isAlphanumeric = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    const std::size_t bracket = text.find('[');
    const std::string_view name = text.substr(0, bracket);
    if (name.empty() ||
        !std::all_of(name.begin(), name.end(), [&](char c) { return isAlphanumeric(c) || c == '-' || c == '_'; }))
        return false;
    if (bracket == std::string_view::npos)
        return true;
    std::string_view locale = text.substr(bracket + 1);
    if (locale.size() < 2 || locale.back() != ']')
        return false;
    locale.remove_suffix(1);
    return std::all_of(locale.begin(), locale.end(),
                       [&](char c) { return isAlphanumeric(c) || c == '-' || c == '_' || c == '.' || c == '@'; });
}

/// The name in "[name]"; empty when it is no such line.
std::optional<std::string_view> groupName(std::string_view line) {
    line = line.substr(0, line.find_last_not_of(" \t") + 1); // fewer blanks than elsewhere, as GLib has it
    if (line.size() < 3 || line.front() != '[' || line.back() != ']')
        return std::nullopt;
    const std::string_view name = line.substr(1, line.size() - 2);
    if (name.find_first_of("[]") != std::string_view::npos || std::any_of(name.begin(), name.end(), isControl))
        return std::nullopt;
    return name;
}

std::optional<std::string> unescaped(std::string_view value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\') {
            text += value[i];
            continue;
        }
        if (++i == value.size())
            return std::nullopt;
        const auto* const escape =
            std::find_if(escapes.begin(), escapes.end(), [&](const auto& each) { return each.first == value[i]; });
        if (escape == escapes.end())
            return std::nullopt;
        text += escape->second;
    }
    return text;
}

/// The line cut into words as a shell does it, without anything that a shell would fill in.
std::optional<std::vector<std::string>> words(std::string_view line) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\n'; };
    std::vector<std::string> all;
    std::optional<std::string> word;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (isBlank(c)) {
            if (word)
                all.push_back(*std::exchange(word, std::nullopt));
            continue;
        }
        if (c == '#' && (i == 0 || isBlank(line[i - 1])))
            return std::nullopt; // a comment to some, part of a word to others
        if (!word)
            word.emplace();
        if (c == '\\') {
            if (++i == line.size() || line[i] == '\n')
                return std::nullopt; // there is no next line that it could go on in
            *word += line[i];
        } else if (c == '\'') {
            const std::size_t end = line.find('\'', i + 1);
            if (end == std::string_view::npos)
                return std::nullopt;
            *word += line.substr(i + 1, end - i - 1);
            i = end;
        } else if (c == '"') {
            for (++i; i < line.size() && line[i] != '"'; ++i) {
                const char next = line[i] == '\\' && i + 1 < line.size() ? line[i + 1] : 'x';
                if (next == '\n')
                    return std::nullopt;
                const bool isEscaped = std::string_view("\"`$\\").find(next) != std::string_view::npos;
                *word += isEscaped ? line[++i] : line[i];
            }
            if (i == line.size())
                return std::nullopt;
        } else {
            *word += c;
        }
    }
    if (word)
        all.push_back(*word);
    return all;
}

/// Without "%f", "%U" and their like, of which a program that is started for nothing in particular gets none.
std::optional<std::string> withoutFieldCodes(std::string_view word) {
    std::string text;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] != '%')
            text += word[i];
        else if (++i == word.size())
            return std::nullopt;
        else if (word[i] == '%')
            text += '%';
    }
    return text;
}

} // namespace

std::optional<DesktopEntry> DesktopEntry::parse(std::string_view text) {
    if (text.find('\0') != std::string_view::npos || !isUtf8(text))
        return std::nullopt;
    DesktopEntry entry;
    std::optional<std::string_view> group;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (end < text.size() && line.ends_with('\r')) // at the end of the file it is a part of the line
            line.remove_suffix(1);
        text.remove_prefix(std::min(end + 1, text.size()));

        const std::string_view content = withoutLeading(line);
        if (content.empty() || content.front() == '#')
            continue;
        if (content.front() == '[') {
            const bool isFirst = !group;
            group = groupName(content);
            if (!group || (isFirst && group != mainGroup))
                return std::nullopt;
            continue;
        }
        const std::size_t equals = content.find('=');
        if (!group || equals == std::string_view::npos)
            return std::nullopt;
        const std::string_view key = withoutTrailing(content.substr(0, equals));
        if (!isKey(key))
            return std::nullopt;
        if (group == mainGroup)
            entry.values_.insert_or_assign(std::string(key), std::string(withoutLeading(content.substr(equals + 1))));
    }
    return group ? std::optional(std::move(entry)) : std::nullopt;
}

std::optional<std::string> DesktopEntry::string(std::string_view key) const {
    const auto found = values_.find(key);
    return found != values_.end() ? unescaped(found->second) : std::nullopt;
}

std::optional<bool> DesktopEntry::boolean(std::string_view key) const {
    const auto found = values_.find(key);
    if (found == values_.end())
        return std::nullopt;
    const std::string_view value = withoutTrailing(found->second);
    // Numbers are what older files have.
    if (value == "true" || value == "1")
        return true;
    if (value == "false" || value == "0")
        return false;
    return std::nullopt;
}

std::vector<std::string> DesktopEntry::command(std::string_view key) const {
    const auto line = string(key);
    const auto cut = line ? words(*line) : std::nullopt;
    std::vector<std::string> all;
    for (const std::string& word : cut.value_or(std::vector<std::string>())) {
        auto argument = withoutFieldCodes(word);
        if (!argument)
            return {};
        if (!argument->empty() || word.empty()) // what was only a code is no word
            all.push_back(std::move(*argument));
    }
    return all;
}

bool canBeDesktopEntryValue(std::string_view text) {
    return isUtf8(text) && std::none_of(text.begin(), text.end(),
                                        [](char c) { return isControl(c) && c != '\n' && c != '\t' && c != '\r'; });
}

std::string desktopEntryValue(std::string_view text) {
    std::string value;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isInside = i > 0 && i + 1 < text.size();
        const auto* const escape =
            std::find_if(escapes.begin(), escapes.end(), [&](const auto& each) { return each.second == text[i]; });
        if (escape == escapes.end() || (text[i] == ' ' && isInside))
            value += text[i];
        else
            value += {'\\', escape->first};
    }
    return value;
}

std::string desktopEntryArgument(std::string_view word) {
    std::string quoted = "\"";
    for (const char c : word) {
        if (std::string_view("\"`$\\").find(c) != std::string_view::npos)
            quoted += '\\';
        quoted += c;
        if (c == '%')
            quoted += c;
    }
    return quoted + '"';
}
