// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/LimitMemory.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr std::size_t mostBatteries = 32;
constexpr std::size_t longestModel = 128;
constexpr std::int64_t highestLimit = 99;

bool isControl(char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
}

/// The text before the next blank, which is taken off the line with it; the whole line if there is none.
std::string_view takeWord(std::string_view& line) {
    const std::size_t length = std::min(line.find(' '), line.size());
    const std::string_view word = line.substr(0, length);
    line.remove_prefix(std::min(length + 1, line.size()));
    return word;
}

std::optional<std::int64_t> positive(std::string_view word) {
    std::int64_t number = 0;
    const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    const bool isWhole = error == std::errc() && stop == word.data() + word.size();
    return isWhole && number > 0 ? std::optional(number) : std::nullopt;
}

} // namespace

LimitMemory::Battery LimitMemory::Battery::of(const PackLimit& pack) {
    Battery battery{.model = pack.model.substr(0, longestModel), .design = pack.design};
    std::ranges::replace_if(battery.model, isControl, ' ');
    return battery;
}

void LimitMemory::remember(const Battery& battery, std::int64_t limit) {
    limits.insert_or_assign(battery, limit);
    if (limits.size() > mostBatteries)
        limits.erase(limits.begin()->first == battery ? std::next(limits.begin()) : limits.begin());
}

std::string LimitMemory::encoded() const {
    std::string text;
    for (const auto& [battery, limit] : limits) {
        const std::string design = battery.design ? std::to_string(*battery.design) : "-";
        text += std::to_string(limit) + " " + design + " " + battery.model + "\n";
    }
    return text;
}

LimitMemory LimitMemory::decode(std::string_view text) {
    LimitMemory memory;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const auto limit = positive(takeWord(line));
        const std::string_view capacity = takeWord(line);
        const auto design = positive(capacity);
        const bool isModel = !line.empty() && line.size() <= longestModel && std::ranges::none_of(line, isControl);
        if (limit && *limit <= highestLimit && (design || capacity == "-") && isModel)
            memory.remember({.model = std::string(line), .design = design}, *limit);
    }
    return memory;
}
