// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/MainLoop.h"
#include "platform/Observers.h"
#include "platform/UserDefaults.h"

#include <memory>

/// Preferences in memory. Several stores can share one content, as several programs share one file.
class FakeUserDefaults final : public UserDefaults {
public:
    /// The content, which outlives a store.
    struct Content {
        Dictionary values;
        Observers<> changed;
        bool refusesWrites = false;
    };

    explicit FakeUserDefaults(MainLoop& loop, std::shared_ptr<Content> content = std::make_shared<Content>());

    int registrations = 0; ///< how often fallbacks were registered

    void registerDefaults(const Dictionary& fallbacks) override;
    bool boolForKey(std::string_view key) const override;
    std::int64_t integerForKey(std::string_view key) const override;
    double doubleForKey(std::string_view key) const override;
    std::optional<std::string> stringForKey(std::string_view key) const override;
    void setObject(std::string_view key, const Value& value) override;
    [[nodiscard]] Subscription onChange(std::function<void()> callback) override;

    /// The stored values, without the fallbacks.
    const Dictionary& stored() const { return values_; }

private:
    MainLoop& loop_;
    std::shared_ptr<Content> content_;
    Dictionary values_;
    Dictionary fallbacks_;
    Observers<> observers_;
    Subscription othersChange_;
    Lifetime lifetime_;

    void announce();
};
