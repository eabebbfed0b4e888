// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Subscription.h"

#include <functional>

/// Turns the system's low-power mode on for a while, and lets go of it again. What the user has chosen elsewhere stays
/// chosen, and comes back. All of it ends with the program.
class LowPowerSwitch {
public:
    virtual ~LowPowerSwitch() = default;

    /// Whether the mode can be turned on here: something offers that, and has not refused it.
    virtual bool isOffered() const = 0;

    /// Whether the mode is on because of us.
    virtual bool isHeld() const = 0;

    /// Asks for the mode; nothing if it is not offered or asked for already.
    virtual void hold() = 0;

    /// Lets go of the mode; nothing if we have not asked for it.
    virtual void release() = 0;

    /// Calls back on the main thread after `isOffered` or `isHeld` has changed, also because somebody else has ended
    /// it.
    [[nodiscard]] virtual Subscription onSwitchChanged(std::function<void()> callback) = 0;
};
