// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/DesktopSessionEvents.h"

#include "platform/linux/session/LogindSleep.h"

#include <utility>

DesktopSessionEvents::DesktopSessionEvents(QDBusConnection sessionBus, TerminationSignals& signalEvents,
                                           LogindSleep& sleep)
    : sessionBus_(std::move(sessionBus))
    , signalEvents_(signalEvents)
    , sleep_(sleep) {}

void DesktopSessionEvents::start() {
    signalEvents_.notify([this] { endSession(); });
    // libdbus sends this signal itself when the connection is lost.
    sessionBus_.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                        SLOT(endSession()));
    if (!sessionBus_.isConnected())
        QMetaObject::invokeMethod(this, &DesktopSessionEvents::endSession, Qt::QueuedConnection);
}

Subscription DesktopSessionEvents::onWillSleep(std::function<void()> callback) {
    return sleep_.willSleep.add(std::move(callback));
}

Subscription DesktopSessionEvents::onDidWake(std::function<void()> callback) {
    return sleep_.didWake.add(std::move(callback));
}

Subscription DesktopSessionEvents::onSessionEnd(std::function<void()> callback) {
    return sessionEnd_.add(std::move(callback));
}

void DesktopSessionEvents::endSession() {
    sessionEnd_.notify();
}
