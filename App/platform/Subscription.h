// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <utility>

/// Keeps a subscription alive: once the handle is destroyed, the callback is not called any more.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
    Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        const Subscription ended(std::move(*this));
        end_ = std::exchange(other.end_, nullptr);
        return *this;
    }
    ~Subscription() {
        if (end_)
            end_();
    }

private:
    std::function<void()> end_;
};
