// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Platform.h"
#include "support/FakeBundle.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/FakeDesktopWindows.h"
#include "support/FakeDialogs.h"
#include "support/FakeFiles.h"
#include "support/FakeJournal.h"
#include "support/FakeLoginItem.h"
#include "support/FakeLowPowerSwitch.h"
#include "support/FakeMainLoop.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakePowerSaving.h"
#include "support/FakePowerSources.h"
#include "support/FakeSessionEvents.h"
#include "support/FakeStatusBar.h"
#include "support/FakeSystemSounds.h"
#include "support/FakeUserDefaults.h"

/// Every service as a fake, in one virtual time.
struct FakePlatform {
    FakeJournal journal;
    FakeClock clock;
    FakeMainLoop mainLoop{clock, &journal};
    FakePowerSources powerSources{&journal};
    FakePowerSaving powerSaving{&journal};
    FakeLowPowerSwitch lowPowerSwitch;
    FakeSessionEvents sessionEvents{&journal};
    FakeCalendar calendar;
    FakeUserDefaults defaults{mainLoop};
    FakeFiles files;
    FakeStatusBar statusBar;
    FakeDesktopWindows windows;
    FakeDialogs dialogs{&journal};
    FakeNotificationCenter notificationCenter;
    FakeBundle bundle;
    FakeSystemSounds sounds;
    FakeLoginItem loginItem;

    Platform platform() { return with(calendar, defaults, files); }

    /// The same, but for these three.
    Platform with(Calendar& otherCalendar, UserDefaults& otherDefaults, Files& otherFiles) {
        return {.powerSources = powerSources,
                .powerSaving = powerSaving,
                .lowPowerSwitch = lowPowerSwitch,
                .sessionEvents = sessionEvents,
                .mainLoop = mainLoop,
                .clock = clock,
                .calendar = otherCalendar,
                .defaults = otherDefaults,
                .files = otherFiles,
                .statusBar = statusBar,
                .windows = windows,
                .dialogs = dialogs,
                .notificationCenter = notificationCenter,
                .bundle = bundle,
                .sounds = sounds,
                .loginItem = loginItem};
    }
};
