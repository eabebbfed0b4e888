// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/AlertEngine.h"
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

/// Drives the program: reads the battery whenever something may have changed and publishes what follows from it.
/// Everything runs on the main thread; a trigger that arrives on another one stops the program.
class AppModel {
public:
    /// Why a refresh runs. After `launch` and `wake` the past is not known first-hand.
    enum class Reason { launch, event, timer, wake };

    /// Reads the stored end of snooze; no battery is read and nothing is observed before `start()`.
    explicit AppModel(const Platform& platform);
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    Published<BatteryState> state;               ///< the latest reading; assigned only when it differs
    Published<std::optional<Date>> pluggedSince; ///< since when on external power; empty on battery or without one
    Published<std::int64_t> historyVersion;      ///< grows whenever the history may have changed
    Published<std::optional<Date>> snoozeUntil;  ///< the end of the snooze, as the views show it

    /// Runs the first refresh and then follows the system. Called once.
    void start();

    /// One refresh, from the reading to what is published.
    void refresh(Reason reason);

    /// No reminders for an hour from now.
    void snooze();

    /// Reminders come again.
    void cancelSnooze();

    /// Lets the user choose a file and writes the history to it as comma-separated text; says so when that fails.
    void exportHistoryCSV();

    /// Forgets the history, on the disk too.
    void resetHistory();

private:
    Platform platform_;
    BatteryReader reader;

public:
    HistoryStore history; ///< saved by the owner when the program ends

    Notifier notifier; ///< asked for the permission when the user wants reminders

private:
    AlertEngine engine;
    std::unique_ptr<MainLoop::Timer> timer;
    std::vector<Subscription> observations_;
    Lifetime lifetime_;

    void trackPluggedIn(const BatteryState& reading, Date now, Reason reason);
    bool canDeliver(const Prefs& prefs, Date now);
    void publishStoredSnooze();

    /// A callback for a trigger: does nothing once the model is gone, and stops the program off the main thread.
    template <class Function>
    auto trigger(Function function);
};
