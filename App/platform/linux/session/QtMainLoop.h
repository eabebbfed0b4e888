// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainLoop.h"

#include <QObject>

/// Qt's event loop, on the thread that creates this object.
class QtMainLoop final : public MainLoop {
public:
    void async(Task task) override;
    void after(Duration delay, Task task) override;
    [[nodiscard]] std::unique_ptr<Timer> repeat(Duration interval, Duration tolerance, Task task) override;
    bool isMainThread() const override;

    /// Runs the tasks that `async` has been given, for the time after the loop has ended.
    void runPending();

private:
    QObject context_;
};
