// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/TerminationSignals.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <utility>

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

TerminationSignals::TerminationSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, number);
    std::signal(SIGXFSZ, SIG_IGN);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signals_ = FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    arrived_ = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    stop_ = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    try {
        if (signals_ && arrived_ && stop_)
            thread_ = std::thread([this] { follow(); });
    } catch (const std::system_error&) { // no more threads are allowed
    }
    if (!thread_.joinable())
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr); // so that the signals end the process
}

TerminationSignals::~TerminationSignals() {
    eventfd_write(stop_.get(), 1);
    if (thread_.joinable())
        thread_.join();
}

void TerminationSignals::notify(std::function<void()> callback) {
    notifier_ = std::make_unique<QSocketNotifier>(arrived_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this, callback = std::move(callback)] {
                         if (eventfd_t count = 0; eventfd_read(arrived_.get(), &count) == 0)
                             callback();
                     });
}

void TerminationSignals::setLastResort(std::function<void()> function) {
    const std::lock_guard hold(mutex_);
    lastResort_ = std::move(function);
}

bool TerminationSignals::stopsWithin(int milliseconds) const {
    pollfd stop{.fd = stop_.get(), .events = POLLIN, .revents = 0};
    return ::poll(&stop, 1, milliseconds) > 0;
}

void TerminationSignals::follow() {
    std::array<pollfd, 2> events{
        {{.fd = signals_.get(), .events = POLLIN, .revents = 0}, {.fd = stop_.get(), .events = POLLIN, .revents = 0}}};
    signalfd_siginfo signal{};
    do {
        ::poll(events.data(), events.size(), -1);
        if (events[1].revents != 0)
            return;
    } while (::read(signals_.get(), &signal, sizeof signal) != sizeof signal);
    eventfd_write(arrived_.get(), 1);

    const auto end = SteadyClock::now() + 4500ms;
    if (stopsWithin(2000))
        return;
    {
        const std::lock_guard hold(mutex_);
        if (!lastResort_)
            std::_Exit(EXIT_SUCCESS);
        lastResort_();
    }
    const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(end - SteadyClock::now());
    if (!stopsWithin(std::max(0, static_cast<int>(rest.count()))))
        std::_Exit(EXIT_SUCCESS);
}
