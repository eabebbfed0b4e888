// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"

#include "alerts/Prefs.h"
#include "platform/Clock.h"
#include "platform/SessionEvents.h"
#include "platform/UserDefaults.h"
#include "platform/qt/CodeMemory.h"
#include "platform/qt/HeapMemory.h"
#include "views/popover/Popover.h"
#include "views/popover/PopoverView.h"
#include "views/settings/SettingsView.h"
#include "views/settings/SettingsWindow.h"
#include "views/text/StatusItemText.h"
#include "views/text/TimeText.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace {

/// Whoever has closed the details and looks again does so sooner than this.
constexpr Duration untilLookIsOver{60};

} // namespace

AppDelegate::AppDelegate(const Platform& platform, std::function<void()> terminate)
    : platform_(platform)
    , terminate_(std::move(terminate))
    , model(platform) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    platform_.defaults.registerDefaults(Prefs::defaults());
    statusItem = platform_.statusBar.createItem();
    statusItem->setAction([this](std::optional<ScreenPoint> point) { togglePopover(point); });
    updateMenu();
    popover = std::make_unique<Popover>(&platform_.windows);
    QObject::connect(popover.get(), &Popover::closed, popover.get(), [this] { giveBackMemory(); });
    bag.push_back(model.state.subscribe([this](const BatteryState&) { queueUpdate(); }));
    bag.push_back(platform_.defaults.onChange([this] { queueUpdate(); }));
    bag.push_back(model.snoozeUntil.subscribe([this](std::optional<Date>) { queueMenu(); }));
    bag.push_back(model.lowPowerOffer.subscribe([this](AppModel::LowPowerOffer) { queueMenu(); }));
    // The menu shows the end of a snooze in local time, and a traveller may change the time zone.
    bag.push_back(model.historyVersion.subscribe([this](std::int64_t) {
        if (model.snoozeUntil.get())
            queueMenu();
    }));
    // After one of the refreshes, which need no timer of their own.
    bag.push_back(model.historyVersion.subscribe([this](std::int64_t) {
        if (closedAt_)
            platform_.mainLoop.async(lifetime_.guard([this] { giveBackUnusedCode(); }));
    }));
    bag.push_back(platform_.sessionEvents.onSessionEnd(terminate_));
    // An open popup on X11 grabs the keyboard, and a screen locker that needs it before sleep fails.
    bag.push_back(platform_.sessionEvents.onWillSleep([this] { popover->hide(); }));
    model.start();
    updateStatusItem();
}

void AppDelegate::applicationWillTerminate() {
    model.history.save(platform_.clock.now());
}

void AppDelegate::giveBackMemory() {
    // The allocator would keep what showing the details has needed for the next time, which may be hours away. The code
    // waits a while, since it takes time to get back.
    giveBackFreeMemory();
    closedAt_ = platform_.clock.uptime();
}

void AppDelegate::giveBackUnusedCode() {
    const bool isUsed = settingsWindow && settingsWindow->isVisible();
    if (!closedAt_ || isUsed || platform_.clock.uptime() - *closedAt_ < untilLookIsOver)
        return;
    closedAt_.reset();
    giveBackCode();
}

void AppDelegate::queueUpdate() {
    // Observers are called before the new value is stored; a redraw on a later turn of the loop reads the stored one.
    platform_.mainLoop.async(lifetime_.guard([this] { updateStatusItem(); }));
}

void AppDelegate::queueMenu() {
    platform_.mainLoop.async(lifetime_.guard([this] { updateMenu(); }));
}

void AppDelegate::updateStatusItem() {
    if (!statusItem)
        return;
    const BatteryState& state = model.state.get();
    const Prefs prefs = Prefs::current(platform_.defaults);
    const auto symbols = state.symbolNames();
    const auto known =
        std::find_if(symbols.begin(), symbols.end(), [&](const auto& name) { return statusItem->knowsSymbol(name); });
    const std::string number = numberSymbol(state, prefs);
    statusItem->show({
        .symbol = known == symbols.end() ? "" : *known,
        .numberSymbol = statusItem->knowsSymbol(number) ? number : "",
        .accessibilityDescription = "Battery",
        .title = statusItemTitle(state, prefs),
        .widestTitle = widestStatusItemTitle(prefs),
        .toolTip = statusItemToolTip(state),
    });
}

void AppDelegate::updateMenu() {
    // Many notification daemons draw no buttons, so snoozing must be possible here too.
    StatusItem::MenuEntry snooze{"Snooze alerts for 1 hour", [this] { model.snooze(); }};
    if (const std::optional<Date> until = model.snoozeUntil.get()) {
        const std::string time = shortTime(*until).toStdString(); // empty beyond any calendar
        snooze = {time.empty() ? "Cancel snooze" : "Cancel snooze (until " + time + ")",
                  [this] { model.cancelSnooze(); }};
    }
    std::vector<StatusItem::MenuEntry> entries{{"Show details", [this] { showDetails(); }}, std::move(snooze)};
    if (model.lowPowerOffer.get() == AppModel::LowPowerOffer::turnOn)
        entries.push_back({"Turn on Low Power Mode", [this] { model.turnOnLowPowerMode(); }});
    else if (model.lowPowerOffer.get() == AppModel::LowPowerOffer::turnOff)
        entries.push_back({"Turn off Low Power Mode", [this] { model.turnOffLowPowerMode(); }});
    entries.push_back({"Settings…", [this] { openSettings(); }});
    entries.push_back({"Quit", terminate_});
    // Replacing the old tray's menu while it is open would lose the user's selection in it.
    std::vector<std::string> labels;
    for (const StatusItem::MenuEntry& entry : entries)
        labels.push_back(entry.label);
    if (std::exchange(menuLabels_, labels) != labels)
        statusItem->setMenu(std::move(entries));
}

bool AppDelegate::popoverIsShown() const {
    return popover->isVisible();
}

void AppDelegate::togglePopover(std::optional<ScreenPoint> point) {
    if (popoverIsShown())
        popover->hide();
    else if (!popover->wasJustClosed()) // with some panels the click that closed it also asks for it
        openPopover(point);
}

void AppDelegate::showDetails() {
    openPopover(std::nullopt);
}

void AppDelegate::openPopover(std::optional<ScreenPoint> point) {
    if (!statusItem)
        return;
    closedAt_.reset(); // its code is needed now
    popover->prepare();
    model.refresh(AppModel::Reason::event);
    if (popoverView == nullptr) {
        popoverView = new PopoverView(
            model, platform_, [this] { openSettings(); }, terminate_);
        popover->setContent(popoverView);
        QObject::connect(popoverView, &PopoverView::resized, popover.get(), &Popover::place);
    }
    if (!popoverIsShown()) // an open one follows the refresh by itself
        popoverView->rebuild();
    popover->showAt(point);
}

void AppDelegate::openSettings() {
    const bool atKeyboard = popoverIsShown() && popover->testAttribute(Qt::WA_KeyboardFocusChange);
    popover->hide();
    if (!settingsWindow) {
        settingsView = new SettingsView(model, platform_);
        settingsWindow = std::make_unique<SettingsWindow>(settingsView, &platform_.windows);
    }
    settingsView->readAgain();
    settingsWindow->present(atKeyboard);
}
