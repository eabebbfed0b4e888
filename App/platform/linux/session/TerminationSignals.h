// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/files/FileDescriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

/// SIGTERM, SIGINT and SIGHUP as events of the main loop. SIGXFSZ is ignored, so that writing beyond the file size
/// limit fails like writing to a full disk, instead of ending the program.
class TerminationSignals {
public:
    /// Takes the signals over. To be created before any other thread, since threads inherit the blocked signals.
    TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// Calls back on the main thread for each signal, including one that came earlier.
    void notify(std::function<void()> callback);

private:
    FileDescriptor descriptor_;
    std::unique_ptr<QSocketNotifier> notifier_;
};
