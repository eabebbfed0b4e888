// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryFile.h"

#include <simdjson.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

namespace json = simdjson::ondemand;

/// Nobody nests deeper on purpose, and the stack is finite.
constexpr int deepestNesting = 200;

/// Reads a number. False when the text is not a number, or not one that a double can hold.
bool readNumber(json::value& value, double& into) {
    constexpr std::size_t safeLength = 19;
    const std::string_view text = value.raw_json_token();
    if (value.get_double().get(into) != simdjson::SUCCESS)
        return false;
    if (text.size() <= safeLength)
        return true;
    // QUIRK: simdjson 3.0 reads 0.71769313486231587308 as 0.16: it does not notice that 20 digits are too many for it
    // when they begin after the decimal point. It can be trusted to tell whether a text is a number.
    double number = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc())
        return std::abs(into) < 1; // closer to zero than any double
    into = number;
    return true;
}

/// simdjson checks only the values that it is asked for. We ask for unused ones too, because a file that is broken
/// anywhere may be broken everywhere.
bool isSound(json::value value, int depth);

bool isSoundArray(json::value value, int depth) {
    json::array array;
    if (value.get_array().get(array) != simdjson::SUCCESS)
        return false;
    for (auto element : array) {
        json::value inner;
        if (element.get(inner) != simdjson::SUCCESS || !isSound(inner, depth))
            return false;
    }
    return true;
}

bool isSoundObject(json::value value, int depth) {
    json::object object;
    if (value.get_object().get(object) != simdjson::SUCCESS)
        return false;
    for (auto entry : object) {
        json::field field;
        std::string_view key;
        if (std::move(entry).get(field) != simdjson::SUCCESS || field.unescaped_key().get(key) != simdjson::SUCCESS ||
            !isSound(field.value(), depth))
            return false;
    }
    return true;
}

bool isSound(json::value value, int depth) {
    json::json_type type{};
    if (depth > deepestNesting || value.type().get(type) != simdjson::SUCCESS)
        return false;
    switch (type) {
    case json::json_type::array:
        return isSoundArray(value, depth + 1);
    case json::json_type::object:
        return isSoundObject(value, depth + 1);
    case json::json_type::number: {
        double number = 0;
        return readNumber(value, number);
    }
    case json::json_type::string:
        return value.get_string().error() == simdjson::SUCCESS;
    case json::json_type::boolean:
        return value.get_bool().error() == simdjson::SUCCESS;
    case json::json_type::null: {
        bool isNull = false;
        return value.is_null().get(isNull) == simdjson::SUCCESS && isNull;
    }
    default: // simdjson 4 adds a type for anything else
        return false;
    }
}

/// 2 to the 63rd. A number that is not written as a 64-bit integer must be smaller, because a double cannot tell this
/// one from the next larger integers.
constexpr double tooLargeForPercent = 9223372036854775808.0;

/// Reads a whole number, even one written with a decimal point or an exponent; any other number gives no value. False
/// when the text is not a number at all.
bool readWhole(json::value& value, std::optional<std::int64_t>& into) {
    std::int64_t whole = 0;
    double number = 0;
    into.reset();
    if (value.get_int64().get(whole) == simdjson::SUCCESS) {
        into = whole;
        return true;
    }
    if (!readNumber(value, number))
        return false;
    if (std::trunc(number) == number && std::abs(number) < tooLargeForPercent)
        into = static_cast<std::int64_t>(number);
    return true;
}

/// The fields of one object that have been read so far.
struct Fields {
    std::optional<double> t;
    std::optional<std::int64_t> p;
    std::optional<bool> c;
    std::optional<bool> a;

    /// Takes one key with its value. False when the text itself is broken; a value of the wrong type for its key counts
    /// as missing.
    bool take(std::string_view key, json::value value) {
        json::json_type type{};
        if (value.type().get(type) != simdjson::SUCCESS)
            return false;
        const bool isNumber = type == json::json_type::number;
        const bool isBoolean = type == json::json_type::boolean;
        if (key == "t" && isNumber)
            return readNumber(value, t.emplace());
        if (key == "p" && isNumber)
            return readWhole(value, p);
        if (key == "c" && isBoolean)
            return read(value.get_bool(), c);
        if (key == "a" && isBoolean)
            return read(value.get_bool(), a);
        if (key == "t")
            t.reset();
        else if (key == "p")
            p.reset();
        else if (key == "c")
            c.reset();
        else if (key == "a")
            a.reset();
        return isSound(value, 0);
    }

    std::optional<Sample> sample() const {
        if (!t || !p || !c || !a)
            return std::nullopt;
        return Sample{.t = *t, .p = *p, .c = *c, .a = *a};
    }

private:
    template <class Result, class Value>
    static bool read(Result result, std::optional<Value>& into) {
        Value value{};
        if (std::move(result).get(value) != simdjson::SUCCESS)
            return false;
        into = value;
        return true;
    }
};

std::optional<Sample> decodeSample(json::value value) {
    json::object object;
    if (value.get_object().get(object) != simdjson::SUCCESS)
        return std::nullopt;
    Fields fields;
    for (auto entry : object) {
        json::field field;
        std::string_view key;
        if (std::move(entry).get(field) != simdjson::SUCCESS || field.unescaped_key().get(key) != simdjson::SUCCESS ||
            !fields.take(key, field.value()))
            return std::nullopt;
    }
    return fields.sample();
}

template <class Number, class... Format>
void append(std::string& text, Number number, Format... format) {
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number, format...);
    text.append(digits.data(), result.ptr);
}

/// Appends the shortest text, but without an exponent for times of any practical use.
void appendTime(std::string& text, double t) {
    if (std::abs(t) >= 1e-4 && std::abs(t) < 1e16)
        append(text, t, std::chars_format::fixed);
    else
        append(text, t);
}

} // namespace

std::optional<SampleList> decodeHistory(std::string text) {
    // Later versions of simdjson skip a byte-order mark.
    if (text.starts_with("\xEF\xBB\xBF"))
        return std::nullopt;
    const std::size_t length = text.size();
    text.reserve(length + simdjson::SIMDJSON_PADDING);
    json::parser parser;
    json::document document;
    json::array array;
    if (parser.iterate(simdjson::padded_string_view(text.data(), length, text.capacity())).get(document) !=
            simdjson::SUCCESS ||
        document.get_array().get(array) != simdjson::SUCCESS)
        return std::nullopt;
    SampleList samples;
    for (auto element : array) {
        json::value value;
        if (element.get(value) != simdjson::SUCCESS)
            return std::nullopt;
        const std::optional<Sample> sample = decodeSample(value);
        if (!sample)
            return std::nullopt;
        samples.push_back(*sample);
    }
    // simdjson has no current location once all of the text has been read.
    if (document.current_location().error() != simdjson::OUT_OF_BOUNDS)
        return std::nullopt;
    return samples;
}

std::optional<std::string> encodeHistory(const SampleList& samples) {
    constexpr std::size_t usualLength = 56; // {"t":1731650000.123456,"p":80,"c":false,"a":false},
    std::string text;
    text.reserve(samples.size() * usualLength + 2);
    text += '[';
    for (const Sample sample : samples) {
        if (!std::isfinite(sample.t))
            return std::nullopt;
        text += text.size() == 1 ? R"({"t":)" : R"(,{"t":)";
        appendTime(text, sample.t);
        text += R"(,"p":)";
        append(text, sample.p);
        text += sample.c ? R"(,"c":true)" : R"(,"c":false)";
        text += sample.a ? R"(,"a":true})" : R"(,"a":false})";
    }
    text += ']';
    return text;
}
