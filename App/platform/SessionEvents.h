// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Subscription.h"

#include <functional>

/// Events of the machine and the session. All callbacks arrive on the main thread.
class SessionEvents {
public:
    virtual ~SessionEvents() = default;

    /// Called before the machine sleeps; sleep is delayed until the callback has returned, as far as the system allows.
    [[nodiscard]] virtual Subscription onWillSleep(std::function<void()> callback) = 0;

    /// Called after the machine has woken, and after a sleep that did not happen.
    [[nodiscard]] virtual Subscription onDidWake(std::function<void()> callback) = 0;

    /// Called when the program should quit: the session is ending, or the user or the system asks for it.
    [[nodiscard]] virtual Subscription onSessionEnd(std::function<void()> callback) = 0;
};
