// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <utility>

/// Calls a method without waiting and gives the finished call to `done`, which takes a QDBusPendingReply of the
/// expected types (an error if the reply has others) or the QDBusPendingCall itself. A negative timeout is libdbus's
/// own, 25 s. Nothing comes once `context` is destroyed.
template <class Function>
void callAsync(const QDBusConnection& bus, const QDBusMessage& message, QObject* context, Function done,
               std::chrono::milliseconds timeout = std::chrono::milliseconds(-1)) {
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, static_cast<int>(timeout.count())), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [done = std::move(done)](QDBusPendingCallWatcher* call) {
                         call->deleteLater();
                         done(*call);
                     });
}

/// How often to ask a service that owns its name already but does not answer yet.
inline constexpr int answerTries = 5;

/// Runs `ask` in a second if `error` came from a service that is there; one that is not is heard of when it appears.
template <class Function>
void askAgain(QObject* context, const QDBusError& error, int triesLeft, Function ask) {
    if (triesLeft > 0 && error.type() != QDBusError::ServiceUnknown)
        QTimer::singleShot(std::chrono::seconds(1), context, ask);
}
