// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LowPowerSwitch.h"
#include "platform/Observers.h"

#include <functional>
#include <utility>

/// A low-power mode that is held when the test says so. By default the machine does not offer it.
class FakeLowPowerSwitch final : public LowPowerSwitch {
public:
    int holds = 0;    ///< how often it was asked for
    int releases = 0; ///< how often it was let go

    bool isOffered() const override { return isOffered_; }
    bool isHeld() const override { return isHeld_; }
    void hold() override { ++holds; }
    void release() override {
        ++releases;
        become(isOffered_, false);
    }
    [[nodiscard]] Subscription onSwitchChanged(std::function<void()> callback) override {
        return observers_.add(std::move(callback));
    }

    /// Something outside has changed.
    void become(bool offered, bool held) {
        isOffered_ = offered;
        isHeld_ = held;
        observers_.notify();
    }

private:
    bool isOffered_ = false;
    bool isHeld_ = false;
    Observers<> observers_;
};
