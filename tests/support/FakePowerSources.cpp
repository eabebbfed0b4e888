// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakePowerSources.h"

#include <utility>

class FakePowerSources::Handle final : public Notification {
public:
    Handle(FakePowerSources& owner, std::function<void()> changed) : owner_(owner), callback(std::move(changed)) {
        owner_.handles_.push_back(this);
    }
    ~Handle() override { std::erase(owner_.handles_, this); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

private:
    FakePowerSources& owner_;

public:
    std::function<void()> callback;
};

PowerSnapshot FakePowerSources::snapshot() {
    ++snapshots;
    note(journal_, "read");
    if (whileReading)
        whileReading();
    PowerSnapshot snapshot{.sources = sources, .batteryProperties = {}, .packLimits = packLimits};
    if (hasRegistry) {
        snapshot.batteryProperties = [this] {
            ++registryReads;
            return registry;
        };
    }
    return snapshot;
}

std::unique_ptr<PowerSources::Notification> FakePowerSources::notify(std::function<void()> changed) {
    ++notifyCalls;
    note(journal_, "power sources");
    if (!reportsChanges)
        return nullptr;
    callbacks.push_back(changed);
    return std::make_unique<Handle>(*this, std::move(changed));
}

void FakePowerSources::setBattery(int percent, bool onExternalPower, bool isCharging) {
    sources = std::vector<std::optional<Value>>{Value(internalBattery(percent, onExternalPower, isCharging))};
}

void FakePowerSources::change() {
    for (Handle* handle : std::vector(handles_))
        handle->callback();
}

Dictionary internalBattery(int percent, bool onExternalPower, bool isCharging) {
    return {
        {"Type", "InternalBattery"},
        {"Is Present", true},
        {"Current Capacity", percent},
        {"Max Capacity", 100},
        {"Power Source State", onExternalPower ? "AC Power" : "Battery Power"},
        {"Is Charging", isCharging},
    };
}
