// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LoginItem.h"

#include <string>
#include <vector>

/// A login item without a login.
class FakeLoginItem final : public LoginItem {
public:
    bool enabled = false;                ///< tests change it, too, as the desktop would
    std::optional<std::string> failure;  ///< why nothing can be changed; empty while it can
    std::vector<std::string> operations; ///< "register" and "unregister", including failed ones

    bool isEnabled() const override { return enabled; }
    std::optional<std::string> registerItem() override { return set("register", true); }
    std::optional<std::string> unregisterItem() override { return set("unregister", false); }

private:
    std::optional<std::string> set(const char* operation, bool on) {
        operations.emplace_back(operation);
        if (enabled != on && failure)
            return failure;
        enabled = on;
        return std::nullopt;
    }
};
