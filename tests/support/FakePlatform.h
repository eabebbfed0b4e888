// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Platform.h"
#include "support/FakeBundle.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/FakeFiles.h"
#include "support/FakeJournal.h"
#include "support/FakeLoginItem.h"
#include "support/FakeMainLoop.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakePanels.h"
#include "support/FakePowerSources.h"
#include "support/FakeProcessInfo.h"
#include "support/FakeStatusBar.h"
#include "support/FakeSystemSounds.h"
#include "support/FakeUserDefaults.h"
#include "support/FakeWorkspace.h"

/// Every service as a fake, in one virtual time.
struct FakePlatform {
    FakeJournal journal;
    FakeClock clock;
    FakeMainLoop mainLoop{clock, &journal};
    FakePowerSources powerSources{&journal};
    FakeProcessInfo processInfo{&journal};
    FakeWorkspace workspace{&journal};
    FakeCalendar calendar;
    FakeUserDefaults defaults{mainLoop};
    FakeFiles files;
    FakeStatusBar statusBar;
    FakePanels panels{&journal};
    FakeNotificationCenter notificationCenter;
    FakeBundle bundle;
    FakeSystemSounds sounds;
    FakeLoginItem loginItem;

    Platform platform() {
        return {.powerSources = powerSources,
                .processInfo = processInfo,
                .workspace = workspace,
                .mainLoop = mainLoop,
                .clock = clock,
                .calendar = calendar,
                .defaults = defaults,
                .files = files,
                .statusBar = statusBar,
                .panels = panels,
                .notificationCenter = notificationCenter,
                .bundle = bundle,
                .sounds = sounds,
                .loginItem = loginItem};
    }
};
