// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/Platform.h"
#include "platform/StatusBar.h"
#include "platform/Subscription.h"
#include "shell/AppModel.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class Popover;
class PopoverView;
class SettingsView;
class SettingsWindow;

/// The program's presence on the screen: the status item, the popover that opens from it, and the settings window.
class AppDelegate {
public:
    /// `terminate` is called to quit the program.
    AppDelegate(const Platform& platform, std::function<void()> terminate);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// Puts the item into the panel and starts the model.
    void applicationDidFinishLaunching();

    /// Whether the history is being loaded. Until that is done nothing is saved.
    bool awaitsHistory() const { return model.history.awaitsFile(); }

    /// Saves everything that must be on the disk; to be called when the main loop has ended.
    void applicationWillTerminate();

    /// Redraws the item from the model's state and the preferences.
    void updateStatusItem();

    /// Opens the popover with a fresh reading, beside the point if one is given; closes it if it is open.
    void togglePopover(std::optional<ScreenPoint> point);

    /// Closes the popover and opens the settings window, or brings it to the front.
    void openSettings();

    /// Opens the popover, or brings an open one to the front.
    void showDetails();

private:
    Platform platform_;
    std::function<void()> terminate_;
    AppModel model;
    std::unique_ptr<StatusItem> statusItem;
    std::unique_ptr<Popover> popover;
    PopoverView* popoverView = nullptr;             ///< the content of the popover, made when it first opens
    std::unique_ptr<SettingsWindow> settingsWindow; ///< made when first needed, and kept
    SettingsView* settingsView = nullptr;           ///< its content
    std::vector<std::string> menuLabels_;           ///< of the entries that the item has
    std::optional<Duration> closedAt_; ///< the uptime when the popover was closed, until its code is given back
    std::vector<Subscription> bag;
    Lifetime lifetime_;

    void giveBackMemory();
    void giveBackUnusedCode();
    void queueUpdate();
    void queueMenu();
    void updateMenu();
    bool popoverIsShown() const;
    void openPopover(std::optional<ScreenPoint> point);
};
