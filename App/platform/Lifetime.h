// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

/// Lets callbacks hold their owner weakly: a function from `guard` does nothing once the owner is gone. Declare it as
/// the owner's last field, so that it is destroyed before the others.
class Lifetime {
public:
    template <class Function>
    auto guard(Function function) const {
        return [weak = std::weak_ptr<const bool>(token_), function = std::move(function)](auto&&... arguments) mutable {
            if (weak.lock())
                function(std::forward<decltype(arguments)>(arguments)...);
        };
    }

private:
    std::shared_ptr<const bool> token_ = std::make_shared<const bool>(true);
};
