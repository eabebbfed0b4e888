// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

/// Whether the desktop starts the program when the user logs in. All calls are synchronous.
class LoginItem {
public:
    virtual ~LoginItem() = default;

    /// Whether the running bundle is started at the next login. Looked up on each call, since the desktop has its own
    /// switches for it.
    virtual bool isEnabled() const = 0;

    /// Has the bundle started at login from now on. Empty on success; otherwise the reason for the failure, in words
    /// for the user.
    [[nodiscard]] virtual std::optional<std::string> registerItem() = 0;

    /// Stops the bundle from being started at login. Empty on success; otherwise the reason for the failure, in words
    /// for the user. An entry that starts another bundle is left alone.
    [[nodiscard]] virtual std::optional<std::string> unregisterItem() = 0;
};
