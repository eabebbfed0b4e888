// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppModel.h"

#include "alerts/Prefs.h"
#include "platform/Clock.h"
#include "platform/Dialogs.h"
#include "platform/Files.h"
#include "platform/LowPowerSwitch.h"
#include "platform/PowerSaving.h"
#include "platform/SessionEvents.h"
#include "platform/UserDefaults.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

using namespace std::chrono_literals;

AppModel::AppModel(const Platform& platform)
    : state(BatteryState{})
    , pluggedSince(std::nullopt)
    , historyVersion(0)
    , snoozeUntil(Prefs::snoozeUntil(platform.defaults, platform.clock))
    , lowPowerOffer(LowPowerOffer::none)
    , hasFirmwareLimit(false)
    , platform_(platform)
    , reader(platform.powerSources, platform.powerSaving)
    , history(platform.files, platform.clock, platform.calendar)
    , notifier(platform.notificationCenter, platform.bundle, platform.dialogs, platform.mainLoop)
    , limits_(platform.files) {}

template <class Function>
auto AppModel::trigger(Function function) {
    return [&loop = platform_.mainLoop, guarded = lifetime_.guard(std::move(function))]() mutable {
        // The model has no locks: a trigger on another thread is a bug in an adapter, and going on would corrupt the
        // model.
        if (!loop.isMainThread())
            std::abort();
        guarded();
    };
}

void AppModel::start() {
    notifier.setup();
    notifier.onSnooze = lifetime_.guard([this] { snooze(); });
    notifier.onTurnOn = lifetime_.guard([this] { turnOnLowPowerMode(); });
    notifier.onSuggestedWithoutButton = lifetime_.guard([this] {
        lacksButton_ = true;
        updateLowPowerOffer();
    });
    history.onReload = trigger([this] {
        catchUp();
        historyVersion.set(historyVersion.get() + 1);
    });
    limits_.onLoad = trigger([this] { catchUp(); });
    refresh(Reason::launch);
    reader.startObserving(trigger([this] { refresh(Reason::event); }));
    timer = platform_.mainLoop.repeat(60s, 10s, trigger([this] { refresh(Reason::timer); }));
    observations_.push_back(platform_.powerSaving.onPowerStateChanged(trigger([this] { refresh(Reason::event); })));
    observations_.push_back(
        platform_.lowPowerSwitch.onSwitchChanged(lifetime_.guard([this] { updateLowPowerOffer(); })));
    observations_.push_back(platform_.sessionEvents.onWillSleep(trigger([this] {
        ++sleeps_;
        history.save(platform_.clock.now());
    })));
    // Right after waking the batteries often cannot be read yet.
    observations_.push_back(platform_.sessionEvents.onDidWake(lifetime_.guard([this] {
        platform_.mainLoop.after(3s, trigger([this, sleep = sleeps_] {
                                     wokenFrom_ = sleep;
                                     refresh(Reason::wake);
                                 }));
    })));
}

void AppModel::refresh(Reason reason) {
    Reading reading{.state = reader.read(),
                    .limits = reader.packLimits(),
                    .now = platform_.clock.now(),
                    .uptime = platform_.clock.uptime(),
                    .reason = reason};
    if (!isLoaded()) { // a slow disk does not delay what the panel shows
        publish(reading.state);
        early_.push_back(std::move(reading));
        return;
    }
    trackPluggedIn(reading.state, reading.now, reason);
    publish(reading.state);
    recordAndAlert(reading);
}

void AppModel::catchUp() {
    if (!isLoaded())
        return;
    for (const Reading& reading : std::exchange(early_, {})) {
        trackPluggedIn(reading.state, reading.now, reading.reason);
        recordAndAlert(reading);
    }
}

void AppModel::publish(const BatteryState& reading) {
    if (reading != state.get())
        state.set(reading);
}

void AppModel::recordAndAlert(const Reading& reading) {
    // An event may be one of many; other refreshes are recorded even if nothing has changed.
    history.record(reading.state, reading.now, reading.reason != Reason::event);
    historyVersion.set(historyVersion.get() + 1);

    const Prefs prefs = Prefs::current(platform_.defaults);
    // A condition that holds at launch or after waking has not just begun.
    const bool prime = reading.reason == Reason::launch || reading.reason == Reason::wake;
    const bool deliver = !prime && canDeliver(prefs, reading.now);
    for (const PendingAlert& alert :
         engine.run(reading.state, pluggedSince.get(), reading.now, prefs, deliver, prime, platform_.defaults))
        if (!prime)
            notifier.deliver(alert, prefs, platform_.lowPowerSwitch.isOffered());
    watchLimits(reading, prefs, deliver);
    updateLowPowerOffer();
}

void AppModel::watchLimits(const Reading& reading, const Prefs& prefs, bool canDeliver) {
    const bool prime = reading.reason == Reason::launch || reading.reason == Reason::wake;
    // Right after waking, an event may come before the refresh that compares with what was before the sleep; and so may
    // the refresh that was due when the machine went to sleep again.
    if (wokenFrom_ != sleeps_)
        return;
    const bool pluggedIn = reading.state.hasBattery && reading.state.pluggedIn;
    const LimitWatch::Outcome outcome =
        limits_.run(reading.limits, pluggedIn, reading.uptime, canDeliver && prefs.firmwareLimitEnabled, prime);
    notifier.withdraw(outcome.over);
    for (const LimitAlert& alert : outcome.due)
        notifier.deliver(alert, prefs);
    if (hasFirmwareLimit.get() != limits_.concernsMachine())
        hasFirmwareLimit.set(limits_.concernsMachine());
}

void AppModel::trackPluggedIn(const BatteryState& reading, Date now, Reason reason) {
    const bool pluggedIn = reading.hasBattery && reading.pluggedIn;
    // Withdraw reminders that the user has acted on. The engine is not told: for it, an episode ends when its own
    // condition does.
    if (reading.lowPowerMode && !state.get().lowPowerMode)
        notifier.withdraw({AlertKind::lowPower});
    if (pluggedIn == pluggedSince.get().has_value())
        return;
    if (!pluggedIn) {
        notifier.withdraw({AlertKind::chargeLimit, AlertKind::tooLong});
        pluggedSince.set(std::nullopt);
        return;
    }
    notifier.withdraw({AlertKind::low, AlertKind::lowPower});
    turnOffLowPowerMode();
    const bool pastIsUnknown = reason == Reason::launch || reason == Reason::wake;
    pluggedSince.set((pastIsUnknown ? history.pluggedSinceEstimate(now) : std::nullopt).value_or(now));
}

bool AppModel::canDeliver(const Prefs& prefs, Date now) {
    if (const std::optional<Date> until = Prefs::snoozeUntil(platform_.defaults, platform_.clock); until > now)
        return false;
    if (snoozeUntil.get())
        snoozeUntil.set(std::nullopt);
    return !prefs.inQuietHours(now, platform_.calendar);
}

void AppModel::snooze() {
    Prefs::setSnoozeUntil(platform_.defaults, platform_.clock.now() + 1h);
    publishStoredSnooze();
}

void AppModel::cancelSnooze() {
    Prefs::setSnoozeUntil(platform_.defaults, std::nullopt);
    publishStoredSnooze();
}

void AppModel::publishStoredSnooze() {
    // Read back, so that exactly the stored value is shown.
    snoozeUntil.set(Prefs::snoozeUntil(platform_.defaults, platform_.clock));
}

void AppModel::turnOnLowPowerMode() {
    if (!pluggedSince.get())
        platform_.lowPowerSwitch.hold();
}

void AppModel::turnOffLowPowerMode() {
    platform_.lowPowerSwitch.release();
}

void AppModel::updateLowPowerOffer() {
    LowPowerOffer offer = LowPowerOffer::none;
    if (!engine.lowPowerSent) // not suggested, or not any more
        lacksButton_ = false;
    if (platform_.lowPowerSwitch.isHeld())
        offer = LowPowerOffer::turnOff;
    else if (lacksButton_ && platform_.lowPowerSwitch.isOffered())
        offer = LowPowerOffer::turnOn;
    if (offer != lowPowerOffer.get())
        lowPowerOffer.set(offer);
}

void AppModel::exportHistoryCSV() {
    platform_.dialogs.bringToFront();
    const std::optional<std::filesystem::path> file =
        platform_.dialogs.runSaveDialog({.contentType = "text/csv", .suggestedName = "Velmora-history.csv"});
    if (!file)
        return;
    if (const std::error_code error = platform_.files.saveDocument(*file, history.csv()))
        platform_.dialogs.runErrorAlert(*file, error);
}

void AppModel::resetHistory() {
    history.reset(platform_.clock.now());
    historyVersion.set(historyVersion.get() + 1);
}
