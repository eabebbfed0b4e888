// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

/// What the watch on the firmware's charge limit has found.
enum class LimitAlertKind {
    notHolding, ///< the battery is charged beyond it
    reset,      ///< it is not set any more
};

/// The identifier of the notification.
constexpr std::string_view rawValue(LimitAlertKind kind) {
    return kind == LimitAlertKind::notHolding ? "limitNotHolding" : "limitReset";
}

/// A reminder about the firmware's charge limit that is due.
struct LimitAlert {
    LimitAlertKind kind = LimitAlertKind::notHolding;
    std::string title;
    std::string body;
    bool operator==(const LimitAlert&) const = default;
};
