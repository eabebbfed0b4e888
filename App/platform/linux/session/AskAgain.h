// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusError>
#include <QObject>
#include <QTimer>

#include <chrono>

/// How often a question is put to a service that has its name already but does not answer yet.
inline constexpr int answerTries = 5;

/// Runs `ask` a little later if `error` is that of a service that is there; one that is not will be heard of when it
/// comes.
template <class Function>
void askAgain(QObject* context, const QDBusError& error, int triesLeft, Function ask) {
    if (triesLeft > 0 && error.type() != QDBusError::ServiceUnknown)
        QTimer::singleShot(std::chrono::seconds(1), context, ask);
}
