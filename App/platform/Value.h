// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

struct Value;
using Dictionary = std::map<std::string, Value, std::less<>>;

/// A value from a platform service. Its type may differ from what its key promises, so each reader asks for the type
/// that it wants and gets nothing otherwise.
struct Value {
    std::variant<std::string, bool, std::int64_t, double, Dictionary> content;

    Value(const char* text) : content(std::string(text)) {}
    Value(std::string text) : content(std::move(text)) {}
    Value(bool flag) : content(flag) {}
    Value(std::integral auto number) : content(static_cast<std::int64_t>(number)) {}
    Value(double number) : content(number) {}
    Value(Dictionary dictionary) : content(std::move(dictionary)) {}

    bool operator==(const Value&) const = default;

    const std::string* text() const { return std::get_if<std::string>(&content); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&content); }
    std::optional<bool> boolean() const;         ///< a number is not a boolean
    std::optional<double> number() const;        ///< an integer or a finite double; a boolean is not a number
    std::optional<std::int64_t> integer() const; ///< a number with its fraction cut off; empty beyond 64 bits
};

/// The entry of `key`, or null.
const Value* find(const Dictionary& dictionary, std::string_view key);
