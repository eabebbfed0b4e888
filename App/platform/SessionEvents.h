// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Subscription.h"

#include <functional>

/// What happens to the machine and the session. All callbacks arrive on the main thread.
class SessionEvents {
public:
    virtual ~SessionEvents() = default;

    /// Called before the machine sleeps; sleep waits until the callback has returned, as far as the system lets it.
    [[nodiscard]] virtual Subscription onWillSleep(std::function<void()> callback) = 0;

    /// Called after the machine woke, and after a sleep that did not come about.
    [[nodiscard]] virtual Subscription onDidWake(std::function<void()> callback) = 0;

    /// Called when the program is to end: the session ends, or the user or the system asks it to.
    [[nodiscard]] virtual Subscription onSessionEnd(std::function<void()> callback) = 0;
};
