// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/SessionWorkspace.h"

#include "platform/linux/session/LogindSleep.h"

#include <utility>

SessionWorkspace::SessionWorkspace(QDBusConnection sessionBus, TerminationSignals& signalEvents, LogindSleep& sleep)
    : sessionBus_(std::move(sessionBus))
    , signalEvents_(signalEvents)
    , sleep_(sleep) {}

void SessionWorkspace::start() {
    signalEvents_.notify([this] { endSession(); });
    // The bus library itself says so when the connection is lost.
    sessionBus_.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                        SLOT(endSession()));
    if (!sessionBus_.isConnected())
        QMetaObject::invokeMethod(this, &SessionWorkspace::endSession, Qt::QueuedConnection);
}

Subscription SessionWorkspace::onWillSleep(std::function<void()> callback) {
    return sleep_.willSleep.add(std::move(callback));
}

Subscription SessionWorkspace::onDidWake(std::function<void()> callback) {
    return sleep_.didWake.add(std::move(callback));
}

Subscription SessionWorkspace::onSessionEnd(std::function<void()> callback) {
    return sessionEnd_.add(std::move(callback));
}

void SessionWorkspace::endSession() {
    sessionEnd_.notify();
}
