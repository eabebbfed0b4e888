// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PowerSources.h"
#include "support/FakeJournal.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Power sources that say what the test put there. By default a machine without any.
class FakePowerSources final : public PowerSources {
public:
    explicit FakePowerSources(FakeJournal* journal = nullptr) : journal_(journal) {}

    std::optional<std::vector<std::optional<Value>>> sources;
    std::optional<Value> registry;                ///< the battery registry's entry
    bool hasRegistry = true;                      ///< false: there is not even a way to ask for the entry
    bool reportsChanges = true;                   ///< false: a system without change reports
    std::function<void()> whileReading;           ///< what happens while a snapshot is taken
    int snapshots = 0;                            ///< how many were taken
    int registryReads = 0;                        ///< how often the registry's entry was asked for
    int notifyCalls = 0;                          ///< how often change reports were asked for
    std::vector<std::function<void()>> callbacks; ///< every one ever handed over, also when its handle has gone

    PowerSnapshot snapshot() override;
    [[nodiscard]] std::unique_ptr<Notification> notify(std::function<void()> changed) override;

    /// Puts a single internal battery there.
    void setBattery(int percent, bool onExternalPower, bool isCharging = false);

    /// The system reports a change.
    void change();

private:
    class Handle;
    FakeJournal* journal_;
    std::vector<Handle*> handles_;
};

/// The description of an internal battery that can be read.
Dictionary internalBattery(int percent, bool onExternalPower, bool isCharging = false);
