// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observers.h"
#include "platform/SessionEvents.h"
#include "support/FakeJournal.h"

#include <functional>
#include <utility>
#include <vector>

/// A machine that sleeps, wakes and ends its session when the test says so.
class FakeSessionEvents final : public SessionEvents {
public:
    explicit FakeSessionEvents(FakeJournal* journal = nullptr) : journal_(journal) {}

    // Every callback ever given, even if its subscription has ended.
    std::vector<std::function<void()>> willSleepCallbacks;
    std::vector<std::function<void()>> didWakeCallbacks;
    std::vector<std::function<void()>> sessionEndCallbacks;

    [[nodiscard]] Subscription onWillSleep(std::function<void()> callback) override {
        note(journal_, "will sleep");
        willSleepCallbacks.push_back(callback);
        return willSleep_.add(std::move(callback));
    }
    [[nodiscard]] Subscription onDidWake(std::function<void()> callback) override {
        note(journal_, "did wake");
        didWakeCallbacks.push_back(callback);
        return didWake_.add(std::move(callback));
    }
    [[nodiscard]] Subscription onSessionEnd(std::function<void()> callback) override {
        note(journal_, "session end");
        sessionEndCallbacks.push_back(callback);
        return sessionEnd_.add(std::move(callback));
    }

    void prepareForSleep() { willSleep_.notify(); }
    void wake() { didWake_.notify(); }
    void endSession() { sessionEnd_.notify(); }

private:
    FakeJournal* journal_;
    Observers<> willSleep_;
    Observers<> didWake_;
    Observers<> sessionEnd_;
};
