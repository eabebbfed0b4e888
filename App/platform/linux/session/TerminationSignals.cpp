// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/TerminationSignals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <utility>

TerminationSignals::TerminationSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, number);
    std::signal(SIGXFSZ, SIG_IGN);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    descriptor_ = FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

void TerminationSignals::notify(std::function<void()> callback) {
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this, callback = std::move(callback)] {
                         signalfd_siginfo signal{};
                         while (::read(descriptor_.get(), &signal, sizeof signal) == sizeof signal)
                             callback();
                     });
}
