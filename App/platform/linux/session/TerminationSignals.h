// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/files/FileDescriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

/// SIGTERM, SIGINT and SIGHUP as events of the main loop. SIGXFSZ is ignored, so that writing beyond a limit of the
/// file size fails like writing to a full disk and does not end the program.
class TerminationSignals {
public:
    /// Takes the signals over. To be made before any other thread starts, since threads inherit what is blocked.
    TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// Calls back on the main thread for each signal from now on, also for one that came before.
    void notify(std::function<void()> callback);

private:
    FileDescriptor descriptor_;
    std::unique_ptr<QSocketNotifier> notifier_;
};
