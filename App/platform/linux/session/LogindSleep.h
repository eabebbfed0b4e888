// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observers.h"

#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class SystemBus;

/// Sleep and wake as logind announces them. While the machine is awake we hold a delay lock, so that it does not sleep
/// before all observers of `willSleep` have returned and what they wrote is on the disk; the lock is released for the
/// sleep and taken again after it.
class LogindSleep final : public QObject {
    Q_OBJECT

public:
    using Task = std::function<void()>;

    /// `afterUpdates` runs a task when all that is to be written now has been written.
    explicit LogindSleep(
        SystemBus& bus, std::function<void(Task)> afterUpdates = [](const Task& task) { task(); });

    /// Starts to follow logind.
    void start();

    /// The machine is about to sleep; it waits for all observers and for what they write, as long as logind lets it.
    Observers<> willSleep;

    /// The machine is awake again.
    Observers<> didWake;

private Q_SLOTS:
    void prepareForSleep(bool goesToSleep);

private:
    SystemBus& bus_;
    std::function<void(Task)> afterUpdates_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    std::optional<QDBusUnixFileDescriptor> lock_;
    bool asleep_ = false;
    int request_ = 0;
    std::vector<Subscription> subscriptions_;

    void follow();
    void endSleep(); ///< the logind or the bus is gone that would tell of its end
    void takeLock(int triesLeft);
};
