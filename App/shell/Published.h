// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observers.h"

#include <utility>

/// A value that announces its changes: observers are called before the new value is stored, so they redraw on a later
/// turn of the main loop.
template <class T>
class Published {
public:
    explicit Published(T initial) : value_(std::move(initial)) {}

    const T& get() const { return value_; }

    /// Announces and stores `coming`, even if it equals the current value.
    void set(T coming) {
        observers_.notify(coming);
        value_ = std::move(coming);
    }

    /// Calls back at once with the current value, and from then on with each new value before it is stored.
    [[nodiscard]] Subscription subscribe(std::function<void(const T&)> callback) {
        callback(value_);
        return observers_.add(std::move(callback));
    }

private:
    T value_;
    Observers<const T&> observers_;
};
