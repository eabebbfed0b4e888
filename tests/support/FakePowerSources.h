// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PowerSources.h"
#include "support/FakeJournal.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Power sources that the test sets. By default a machine without any.
class FakePowerSources final : public PowerSources {
public:
    explicit FakePowerSources(FakeJournal* journal = nullptr) : journal_(journal) {}

    std::optional<std::vector<std::optional<Value>>> sources;
    std::optional<Value> registry;                ///< the battery registry's entry
    std::vector<PackLimit> packLimits;            ///< every pack
    bool hasRegistry = true;                      ///< false: there is not even a way to ask for the entry
    bool reportsChanges = true;                   ///< false: a system without change reports
    std::function<void()> whileReading;           ///< runs while a snapshot is taken
    int snapshots = 0;                            ///< how many were taken
    int registryReads = 0;                        ///< how often the registry's entry was asked for
    int notifyCalls = 0;                          ///< how often change reports were asked for
    std::vector<std::function<void()>> callbacks; ///< every one ever given, even if its subscription has ended

    PowerSnapshot snapshot() override;
    [[nodiscard]] std::unique_ptr<Notification> notify(std::function<void()> changed) override;

    /// Sets a single internal battery.
    void setBattery(int percent, bool onExternalPower, bool isCharging = false);

    /// The system reports a change.
    void change();

private:
    class Handle;
    FakeJournal* journal_;
    std::vector<Handle*> handles_;
};

/// A readable description of an internal battery.
Dictionary internalBattery(int percent, bool onExternalPower, bool isCharging = false);
