// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ProcessInfo.h"

/// A system without a low-power mode.
class InertProcessInfo final : public ProcessInfo {
public:
    bool isLowPowerModeEnabled() const override { return false; }
    [[nodiscard]] Subscription onPowerStateChanged(std::function<void()> /*callback*/) override {
        return Subscription();
    }
};
