// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeUserDefaults.h"

#include <cmath>
#include <string>
#include <utility>

namespace {

/// A number without a fraction, 80 as well as 80.0.
std::optional<std::int64_t> wholeNumber(const Value& value) {
    const auto number = value.number();
    return number && std::trunc(*number) == *number ? value.integer() : std::nullopt;
}

/// The result of `read` for the stored value, or else for the fallback.
template <class Read>
auto lookUp(const Dictionary& values, const Dictionary& fallbacks, std::string_view key, Read read) {
    decltype(read(std::declval<const Value&>())) result;
    for (const Dictionary* dictionary : {&values, &fallbacks}) {
        const Value* value = find(*dictionary, key);
        if (value != nullptr && !result)
            result = read(*value);
    }
    return result;
}

} // namespace

FakeUserDefaults::FakeUserDefaults(MainLoop& loop, std::shared_ptr<Content> content)
    : loop_(loop)
    , content_(std::move(content))
    , values_(content_->values)
    , othersChange_(content_->changed.add([this] {
        if (values_ == content_->values)
            return;
        values_ = content_->values;
        announce();
    })) {}

void FakeUserDefaults::registerDefaults(const Dictionary& fallbacks) {
    ++registrations;
    for (const auto& [key, value] : fallbacks)
        fallbacks_.insert_or_assign(key, value);
}

bool FakeUserDefaults::boolForKey(std::string_view key) const {
    return lookUp(values_, fallbacks_, key, [](const Value& value) { return value.boolean(); }).value_or(false);
}

std::int64_t FakeUserDefaults::integerForKey(std::string_view key) const {
    return lookUp(values_, fallbacks_, key, wholeNumber).value_or(0);
}

double FakeUserDefaults::doubleForKey(std::string_view key) const {
    return lookUp(values_, fallbacks_, key, [](const Value& value) { return value.number(); }).value_or(0);
}

std::optional<std::string> FakeUserDefaults::stringForKey(std::string_view key) const {
    return lookUp(values_, fallbacks_, key, [](const Value& value) {
        return value.text() != nullptr ? std::optional(*value.text()) : std::nullopt;
    });
}

void FakeUserDefaults::setObject(std::string_view key, const Value& value) {
    values_.insert_or_assign(std::string(key), value);
    if (!content_->refusesWrites) {
        content_->values.insert_or_assign(std::string(key), value);
        values_ = content_->values;
        content_->changed.notify();
    }
    announce();
}

Subscription FakeUserDefaults::onChange(std::function<void()> callback) {
    return observers_.add(std::move(callback));
}

void FakeUserDefaults::announce() {
    loop_.async(lifetime_.guard([this] { observers_.notify(); }));
}
