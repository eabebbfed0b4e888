// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/QtMainLoop.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <utility>

namespace {

std::chrono::milliseconds milliseconds(Duration duration) {
    return std::chrono::ceil<std::chrono::milliseconds>(duration);
}

class RepeatingTimer final : public MainLoop::Timer {
public:
    RepeatingTimer(Duration interval, Duration tolerance, MainLoop::Task task) {
        // With a second of tolerance Qt fires on whole seconds, together with other programs' timers.
        timer_.setTimerType(tolerance >= Duration(1) ? Qt::VeryCoarseTimer : Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, std::move(task));
        timer_.start(milliseconds(interval));
    }

private:
    QTimer timer_;
};

} // namespace

void QtMainLoop::async(Task task) {
    QMetaObject::invokeMethod(&context_, std::move(task), Qt::QueuedConnection);
}

void QtMainLoop::after(Duration delay, Task task) {
    QTimer::singleShot(milliseconds(delay), Qt::PreciseTimer, &context_, std::move(task));
}

std::unique_ptr<MainLoop::Timer> QtMainLoop::repeat(Duration interval, Duration tolerance, Task task) {
    return std::make_unique<RepeatingTimer>(interval, tolerance, std::move(task));
}

bool QtMainLoop::isMainThread() const {
    return QThread::currentThread() == context_.thread();
}

void QtMainLoop::runPending() {
    QCoreApplication::sendPostedEvents(&context_, QEvent::MetaCall);
}
