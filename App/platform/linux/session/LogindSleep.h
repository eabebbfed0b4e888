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

/// Sleep and wake as logind announces them. While the machine is awake we hold a delay lock, so that it does not sleep
/// before all observers of `willSleep` have returned; the lock is released for the sleep and taken again after it.
class LogindSleep final : public QObject {
    Q_OBJECT

public:
    explicit LogindSleep(SystemBus& bus);

    /// Starts to follow logind.
    void start();

    /// The machine is about to sleep; it waits until all observers have returned, as long as logind lets it.
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
