// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

/// Delivers reminders as desktop notifications. So far it keeps the place where the snooze action comes back.
class Notifier {
public:
    /// Called on the main thread when the user snoozes the reminders from a notification.
    std::function<void()> onSnooze;

    /// Gets ready to deliver. There is no delivery yet, so there is nothing to prepare.
    void setup() {}
};
