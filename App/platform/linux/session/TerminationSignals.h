// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/files/FileDescriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>
#include <mutex>
#include <thread>

/// SIGTERM, SIGINT and SIGHUP as events of the main loop, and as orders that are followed: a display or a bus that
/// hangs can hold the main thread at any moment, also while the program starts. If the process still runs 2 seconds
/// after a signal, it does what `setLastResort` was told; after 4.5 seconds it is ended. SIGXFSZ is ignored, so that
/// writing beyond the file size limit fails like writing to a full disk, instead of ending the program.
class TerminationSignals {
public:
    /// Takes the signals over. To be created before any other thread, since threads inherit the blocked signals.
    TerminationSignals();
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// Calls back on the main thread after the first signal, which may have come earlier.
    void notify(std::function<void()> callback);

    /// What is to be done on another thread when the main thread does not end the process, in at most 2.5 seconds. If
    /// it is being done right now, waits until it is done. Without it the process is ended after 2 seconds.
    void setLastResort(std::function<void()> function);

private:
    FileDescriptor signals_;
    FileDescriptor arrived_; ///< for the main thread
    FileDescriptor stop_;    ///< for the other thread
    std::unique_ptr<QSocketNotifier> notifier_;
    std::mutex mutex_;
    std::function<void()> lastResort_;
    std::thread thread_;

    void follow();
    bool stopsWithin(int milliseconds) const;
};
