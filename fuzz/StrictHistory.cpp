// SPDX-License-Identifier: GPL-3.0-or-later
#include "StrictHistory.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

namespace {

/// Gets each value in the order of the text, including those that a later one with the same key replaces. Each event
/// returns whether the text is valid so far.
class Listener final : public nlohmann::json_sax<nlohmann::json> {
public:
    SampleList samples;

    bool null() override { return value({}); }
    bool boolean(bool flag) override { return value({.flag = flag}); }
    bool number_integer(number_integer_t number) override {
        return value({.real = static_cast<double>(number), .whole = number});
    }
    bool number_unsigned(number_unsigned_t number) override {
        Value read{.real = static_cast<double>(number)};
        if (std::in_range<std::int64_t>(number))
            read.whole = static_cast<std::int64_t>(number);
        return value(read);
    }
    bool number_float(number_float_t number, const string_t& text) override {
        // The program's parser reads no exponent with more digits, not even leading zeros; nobody writes one.
        constexpr std::size_t mostExponentDigits = 19;
        const std::size_t exponent = text.find_first_of("eE");
        if (exponent != std::string::npos &&
            text.size() - text.find_first_of("0123456789", exponent) > mostExponentDigits)
            return false;
        Value read{.real = number};
        if (std::floor(number) == number && std::abs(number) < 0x1p63)
            read.whole = static_cast<std::int64_t>(number);
        return value(read);
    }
    bool string(string_t& /*text*/) override { return value({}); }
    bool binary(binary_t& /*bytes*/) override { return false; }

    bool start_object(std::size_t /*size*/) override {
        const bool isSample = depth_ == inList;
        if (isSample)
            fields_.clear();
        return (isSample || value({})) && ++depth_ > 0;
    }
    bool key(string_t& name) override {
        if (depth_ == inSample)
            key_ = name;
        return true;
    }
    bool end_object() override {
        if (--depth_ != inList)
            return true;
        const auto t = fields_["t"].real;
        const auto p = fields_["p"].whole;
        const auto c = fields_["c"].flag;
        const auto a = fields_["a"].flag;
        if (!t || !p || !c || !a)
            return false;
        samples.push_back({.t = *t, .p = *p, .c = *c, .a = *a});
        return true;
    }
    bool start_array(std::size_t /*size*/) override { return (depth_ == 0 || value({})) && ++depth_ > 0; }
    bool end_array() override { return --depth_ >= 0; }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        return false;
    }

private:
    // How many arrays and objects are open around a sample, around its fields, and around the innermost value.
    static constexpr int inList = 1;
    static constexpr int inSample = 2;
    static constexpr int deepest = inSample + 200;

    /// A value as the type that it can be read as.
    struct Value {
        std::optional<double> real = {};
        std::optional<std::int64_t> whole = {};
        std::optional<bool> flag = {};
    };

    int depth_ = 0;
    std::string key_;
    std::map<std::string, Value> fields_;

    bool value(const Value& value) {
        if (depth_ == inSample)
            fields_[key_] = value;
        return depth_ >= inSample && depth_ <= deepest;
    }
};

} // namespace

std::optional<SampleList> strictlyDecoded(const std::string& text) {
    // This parser skips a byte order mark and takes a zero byte for the end.
    if (text.starts_with("\xEF\xBB\xBF") || text.find('\0') != std::string::npos)
        return std::nullopt;
    Listener listener;
    if (!nlohmann::json::sax_parse(text, &listener))
        return std::nullopt;
    return listener.samples;
}
