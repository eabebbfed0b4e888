// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Subscription.h"
#include "platform/Value.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// The user's preferences: keys with plain values, and fallbacks for keys that the user has not set. A stored value of
/// another type than requested counts as absent.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// Sets the values that absent keys return. They are never stored.
    virtual void registerDefaults(const Dictionary& fallbacks) = 0;

    virtual bool boolForKey(std::string_view key) const = 0;                         ///< false when absent
    virtual std::int64_t integerForKey(std::string_view key) const = 0;              ///< 0 when absent
    virtual double doubleForKey(std::string_view key) const = 0;                     ///< 0 when absent
    virtual std::optional<std::string> stringForKey(std::string_view key) const = 0; ///< empty when absent

    /// Stores a value. If it cannot be written, no error is reported and the value holds for this run only.
    virtual void setObject(std::string_view key, const Value& value) = 0;

    /// Calls back on the main thread, on a later turn of the loop, after values were changed by us or by others.
    [[nodiscard]] virtual Subscription onChange(std::function<void()> callback) = 0;
};
