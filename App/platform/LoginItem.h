// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

/// Whether the desktop starts the program when the user logs in. All calls are synchronous.
class LoginItem {
public:
    virtual ~LoginItem() = default;

    /// Whether the bundle that runs is started at the next login. Looked up at each call, since the desktop has
    /// switches of its own for it.
    virtual bool isEnabled() const = 0;

    /// Has the bundle started at login from now on. Empty when it is; otherwise the reason why not, for people.
    [[nodiscard]] virtual std::optional<std::string> registerItem() = 0;

    /// Has it no longer started. Empty when it is not; otherwise the reason, for people. What starts another bundle is
    /// left alone.
    [[nodiscard]] virtual std::optional<std::string> unregisterItem() = 0;
};
