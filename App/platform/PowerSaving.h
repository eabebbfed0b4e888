// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Subscription.h"

#include <functional>

/// The system's power mode.
class PowerSaving {
public:
    virtual ~PowerSaving() = default;

    /// Whether the system's low-power mode is on; false when there is no such mode or its state is unknown.
    virtual bool isLowPowerModeEnabled() const = 0;

    /// Calls back on the main thread after the mode has changed.
    [[nodiscard]] virtual Subscription onPowerStateChanged(std::function<void()> callback) = 0;
};
