// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/SessionWorkspace.h"

#include <utility>

SessionWorkspace::SessionWorkspace(QDBusConnection sessionBus, TerminationSignals& signalEvents)
    : sessionBus_(std::move(sessionBus)), signalEvents_(signalEvents) {}

void SessionWorkspace::start() {
    signalEvents_.notify([this] { endSession(); });
    // The bus library itself says so when the connection is lost.
    sessionBus_.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                        SLOT(endSession()));
}

Subscription SessionWorkspace::onWillSleep(std::function<void()> callback) {
    return willSleep_.add(std::move(callback));
}

Subscription SessionWorkspace::onDidWake(std::function<void()> callback) {
    return didWake_.add(std::move(callback));
}

Subscription SessionWorkspace::onSessionEnd(std::function<void()> callback) {
    return sessionEnd_.add(std::move(callback));
}

void SessionWorkspace::endSession() {
    sessionEnd_.notify();
}
