// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/FileUri.h"

#include "platform/linux/files/AsciiLower.h"

#include <charconv>
#include <string>

namespace {

/// The text without its percent escapes. Of those some stand for what is in no file's name: the end of a text, and the
/// slash, which would make folders out of one name.
std::optional<std::string> unescaped(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes.push_back(text[i]);
            continue;
        }
        unsigned char byte = 0;
        const std::string_view digits = text.substr(i + 1, 2);
        const char* const end = digits.data() + digits.size();
        if (digits.size() != 2 || std::from_chars(digits.data(), end, byte, 16).ptr != end || byte == 0 || byte == '/')
            return std::nullopt;
        bytes.push_back(static_cast<char>(byte));
        i += digits.size();
    }
    return bytes;
}

} // namespace

std::optional<std::filesystem::path> fileOfUri(std::string_view uri) {
    constexpr std::string_view scheme = "file:";
    if (asciiLower(uri.substr(0, scheme.size())) != scheme)
        return std::nullopt;
    std::string_view place = uri.substr(scheme.size());
    if (place.starts_with("//")) {
        place.remove_prefix(2);
        const std::string_view host = place.substr(0, place.find('/'));
        if (!host.empty() && asciiLower(host) != "localhost")
            return std::nullopt;
        place.remove_prefix(host.size());
    }
    // In a name all of these would be escaped; as they are they end it, and what they begin belongs to no file.
    if (!place.starts_with('/') || place.ends_with('/') ||
        place.find_first_of(std::string_view("?#\0", 3)) != place.npos)
        return std::nullopt;
    return unescaped(place);
}
