// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class Bundle;
class Calendar;
class Clock;
class DesktopWindows;
class Files;
class LoginItem;
class LowPowerSwitch;
class MainLoop;
class NotificationCenter;
class Dialogs;
class PowerSources;
class PowerSaving;
class StatusBar;
class SystemSounds;
class UserDefaults;
class SessionEvents;

/// Every service that the program uses, created once by `main`. The referenced objects outlive everything that gets
/// this struct.
struct Platform {
    PowerSources& powerSources;
    PowerSaving& powerSaving;
    LowPowerSwitch& lowPowerSwitch;
    SessionEvents& sessionEvents;
    MainLoop& mainLoop;
    Clock& clock;
    Calendar& calendar;
    UserDefaults& defaults;
    Files& files;
    StatusBar& statusBar;
    DesktopWindows& windows;
    Dialogs& dialogs;
    NotificationCenter& notificationCenter;
    Bundle& bundle;
    SystemSounds& sounds;
    LoginItem& loginItem;
};
