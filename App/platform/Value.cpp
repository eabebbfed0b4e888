// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Value.h"

#include <cmath>

std::optional<bool> Value::boolean() const {
    const bool* flag = std::get_if<bool>(&content);
    return flag ? std::optional(*flag) : std::nullopt;
}

std::optional<double> Value::number() const {
    if (const auto* integer = std::get_if<std::int64_t>(&content))
        return static_cast<double>(*integer);
    const double* number = std::get_if<double>(&content);
    return number && std::isfinite(*number) ? std::optional(*number) : std::nullopt;
}

std::optional<std::int64_t> Value::integer() const {
    if (const auto* integer = std::get_if<std::int64_t>(&content))
        return *integer;
    const double* number = std::get_if<double>(&content);
    // 2^63 is exact as a double, the largest 64-bit integer is not.
    constexpr double limit = 9223372036854775808.0;
    if (!number || !(*number >= -limit && *number < limit))
        return std::nullopt;
    return static_cast<std::int64_t>(*number);
}

const Value* find(const Dictionary& dictionary, std::string_view key) {
    const auto entry = dictionary.find(key);
    return entry == dictionary.end() ? nullptr : &entry->second;
}
