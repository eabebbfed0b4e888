// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Subscription.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

/// The callbacks for one event. A callback may subscribe and end subscriptions while it is being called, and a
/// subscription may outlive this object.
template <class... Arguments>
class Observers {
public:
    using Callback = std::function<void(Arguments...)>;

    [[nodiscard]] Subscription add(Callback callback) {
        auto entry = std::make_shared<Callback>(std::move(callback));
        entries_->push_back(entry);
        return Subscription([entry, weak = std::weak_ptr(entries_)] {
            *entry = nullptr;
            if (const auto entries = weak.lock())
                std::erase(*entries, entry);
        });
    }

    void notify(Arguments... arguments) const {
        const auto present = *entries_;
        for (const auto& entry : present) {
            if (*entry) {
                const Callback callback = *entry;
                callback(arguments...);
            }
        }
    }

private:
    using Entries = std::vector<std::shared_ptr<Callback>>;
    std::shared_ptr<Entries> entries_ = std::make_shared<Entries>();
};
