// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/PowerSupply.h"

#include "platform/linux/files/AsciiLower.h"

#include <simdjson.h>

#include <charconv>

std::optional<std::string> PowerSupply::text(std::string_view attribute) const {
    constexpr std::string_view blank(" \t\r\n\v\f\0", 7);
    const auto entry = attributes.find(attribute);
    if (entry == attributes.end() || !simdjson::validate_utf8(entry->second))
        return std::nullopt;
    const std::string& content = entry->second;
    const auto first = content.find_first_not_of(blank);
    if (first == std::string::npos)
        return std::nullopt;
    return content.substr(first, content.find_last_not_of(blank) - first + 1);
}

std::optional<std::int64_t> PowerSupply::integer(std::string_view attribute) const {
    const auto content = text(attribute);
    if (!content)
        return std::nullopt;
    std::int64_t number = 0;
    const char* end = content->data() + content->size();
    const auto [stop, error] = std::from_chars(content->data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<double> PowerSupply::number(std::string_view attribute, std::string_view otherwise) const {
    auto number = integer(attribute);
    if (!number && !otherwise.empty())
        number = integer(otherwise);
    return number ? std::optional(static_cast<double>(*number)) : std::nullopt;
}

bool PowerSupply::isPeripheral() const {
    return asciiLower(text("scope").value_or("")) == "device";
}

bool PowerSupply::isSystemBattery() const {
    return text("type") == "Battery" && !isPeripheral() && integer("present") != 0;
}

bool PowerSupply::isExternalSupply() const {
    const auto type = text("type");
    return type && *type != "Battery" && *type != "UPS" && !isPeripheral() && (integer("online") || integer("present"));
}

bool PowerSupply::isOnline() const {
    return isExternalSupply() && integer("online").value_or(integer("present").value_or(0)) > 0;
}
