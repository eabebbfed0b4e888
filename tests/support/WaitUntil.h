// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

/// Runs the event loop until `condition` holds; false if it does not within the limit.
template <class Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    const QDeadlineTimer deadline(limit);
    QTimer tick; // wakes the loop when no event announces the condition
    tick.start(10);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}
