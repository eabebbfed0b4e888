// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observers.h"
#include "platform/SessionEvents.h"
#include "platform/linux/session/TerminationSignals.h"

#include <QDBusConnection>
#include <QObject>

class LogindSleep;

/// The end of the session, by a signal or by the loss of the session bus, and the machine's sleep.
class DesktopSessionEvents final : public QObject, public SessionEvents {
    Q_OBJECT

public:
    DesktopSessionEvents(QDBusConnection sessionBus, TerminationSignals& signalEvents, LogindSleep& sleep);

    /// Starts to listen.
    void start();

    [[nodiscard]] Subscription onWillSleep(std::function<void()> callback) override;
    [[nodiscard]] Subscription onDidWake(std::function<void()> callback) override;
    [[nodiscard]] Subscription onSessionEnd(std::function<void()> callback) override;

private Q_SLOTS:
    void endSession();

private:
    QDBusConnection sessionBus_;
    TerminationSignals& signalEvents_;
    LogindSleep& sleep_;
    Observers<> sessionEnd_;
};
