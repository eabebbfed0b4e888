// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/AlertEngine.h"
#include "alerts/FirmwareLimits.h"
#include "alerts/Notifier.h"
#include "battery/BatteryReader.h"
#include "battery/BatteryState.h"
#include "history/HistoryStore.h"
#include "platform/Lifetime.h"
#include "platform/MainLoop.h"
#include "platform/Platform.h"
#include "platform/Subscription.h"
#include "shell/Published.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

struct Prefs;

/// Drives the program: reads the battery whenever something may have changed and publishes the results. Everything runs
/// on the main thread; a trigger on another thread aborts the program.
class AppModel {
public:
    /// Why a refresh runs. With `launch` and `wake` we have not seen what happened before.
    enum class Reason { launch, event, timer, wake };

    /// What the menu offers to do about Low Power Mode.
    enum class LowPowerOffer { none, turnOn, turnOff };

    /// Reads the stored end of the snooze; no battery is read and nothing is observed before `start()`.
    explicit AppModel(const Platform& platform);
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    Published<BatteryState> state;               ///< the latest reading; assigned only when it differs
    Published<std::optional<Date>> pluggedSince; ///< since when plugged in; empty on battery or without a battery
    Published<std::int64_t> historyVersion;      ///< grows whenever the history may have changed
    Published<std::optional<Date>> snoozeUntil;  ///< the end of the snooze, as the views show it
    Published<LowPowerOffer> lowPowerOffer;      ///< turning it on only while that is suggested without a button
    Published<bool> hasFirmwareLimit;            ///< the firmware of this machine has, or had, a charge limit

    /// Runs the first refresh and then follows the system. Called once.
    void start();

    /// Does one refresh, from reading the battery to publishing the results.
    void refresh(Reason reason);

    /// Holds back all reminders for an hour from now.
    void snooze();

    /// Ends the snooze: reminders are given again.
    void cancelSnooze();

    /// Turns Low Power Mode on until the machine is plugged in; nothing while it is.
    void turnOnLowPowerMode();

    /// Ends what `turnOnLowPowerMode` has begun.
    void turnOffLowPowerMode();

    /// Lets the user choose a file and writes the history to it as CSV; shows an error if that fails.
    void exportHistoryCSV();

    /// Deletes the history, on the disk too.
    void resetHistory();

private:
    Platform platform_;
    BatteryReader reader;

public:
    HistoryStore history; ///< saved by the owner when the program ends

    Notifier notifier; ///< the settings make it ask for permission when the user wants reminders

private:
    AlertEngine engine;
    FirmwareLimits limits_;
    bool lacksButton_ = false; ///< the latest suggestion of Low Power Mode
    int sleeps_ = 0;           ///< how often the machine went to sleep
    int wokenFrom_ = 0;        ///< the last of them that a refresh has followed
    std::unique_ptr<MainLoop::Timer> timer;

    struct Reading {
        BatteryState state;
        std::vector<PackLimit> limits;
        Date now;
        Duration uptime{};
        Reason reason = Reason::launch;
    };
    std::vector<Reading> early_; ///< shown before the files were loaded
    std::vector<Subscription> observations_;
    Lifetime lifetime_;

    void publish(const BatteryState& reading);
    bool isLoaded() const { return history.isLoaded() && limits_.isLoaded(); }
    void catchUp();
    void trackPluggedIn(const BatteryState& reading, Date now, Reason reason);
    void recordAndAlert(const Reading& reading);
    void watchLimits(const Reading& reading, const Prefs& prefs, bool canDeliver);
    bool canDeliver(const Prefs& prefs, Date now);
    void publishStoredSnooze();
    void updateLowPowerOffer();

    /// A callback for a trigger: does nothing once the model is gone, and aborts the program when called off the main
    /// thread.
    template <class Function>
    auto trigger(Function function);
};
