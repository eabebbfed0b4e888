// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class Bundle;
class Calendar;
class Clock;
class Files;
class LoginItem;
class MainLoop;
class NotificationCenter;
class Panels;
class PowerSources;
class ProcessInfo;
class StatusBar;
class SystemSounds;
class UserDefaults;
class Workspace;

/// Every service that the program uses, made once by `main`. The referenced objects outlive everything that is given
/// this struct.
struct Platform {
    PowerSources& powerSources;
    ProcessInfo& processInfo;
    Workspace& workspace;
    MainLoop& mainLoop;
    Clock& clock;
    Calendar& calendar;
    UserDefaults& defaults;
    Files& files;
    StatusBar& statusBar;
    Panels& panels;
    NotificationCenter& notificationCenter;
    Bundle& bundle;
    SystemSounds& sounds;
    LoginItem& loginItem;
};
