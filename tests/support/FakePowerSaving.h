// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observers.h"
#include "platform/PowerSaving.h"
#include "support/FakeJournal.h"

#include <functional>
#include <utility>
#include <vector>

/// A system whose low-power mode the test switches.
class FakePowerSaving final : public PowerSaving {
public:
    explicit FakePowerSaving(FakeJournal* journal = nullptr) : journal_(journal) {}

    bool lowPowerMode = false;
    std::vector<std::function<void()>> callbacks; ///< every one ever given, even if its subscription has ended

    bool isLowPowerModeEnabled() const override { return lowPowerMode; }
    [[nodiscard]] Subscription onPowerStateChanged(std::function<void()> callback) override {
        note(journal_, "power state");
        callbacks.push_back(callback);
        return observers_.add(std::move(callback));
    }

    /// The user switches the mode.
    void switchLowPowerMode(bool on) {
        lowPowerMode = on;
        observers_.notify();
    }

private:
    FakeJournal* journal_;
    Observers<> observers_;
};
