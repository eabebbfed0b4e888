// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observers.h"

#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>
#include <QObject>

#include <memory>
#include <optional>
#include <vector>

class SystemBus;

/// Sleep and wake as logind announces them. A delay lock is held while the machine is awake, so that it does not sleep
/// before `willSleep` has been dealt with; it is let go for the sleep and taken again after it.
class LogindSleep final : public QObject {
    Q_OBJECT

public:
    explicit LogindSleep(SystemBus& bus);

    /// Starts to follow logind.
    void start();

    /// The machine is about to sleep; it waits until all who listen have returned, for as long as logind lets it.
    Observers<> willSleep;

    /// The machine is awake again.
    Observers<> didWake;

private Q_SLOTS:
    void prepareForSleep(bool goesToSleep);

private:
    SystemBus& bus_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    std::optional<QDBusUnixFileDescriptor> lock_;
    bool asleep_ = false;
    int request_ = 0;
    std::vector<Subscription> subscriptions_;

    void follow();
    void takeLock(int triesLeft);
};
