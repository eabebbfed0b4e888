// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DesktopWindows.h"
#include "support/FakeJournal.h"

#include <utility>

/// Writes down what it is told of our windows.
class FakeDesktopWindows : public DesktopWindows {
public:
    /// `journal` may be null.
    explicit FakeDesktopWindows(FakeJournal* journal = nullptr) : journal_(journal) {}

    std::function<void()> clickedElsewhere; ///< empty while the popover is hidden

    std::optional<ScreenRect> free; ///< of each screen
    std::optional<ScreenRect> freeArea(const QScreen& /*screen*/) override { return free; }

    bool hasShadows = false;
    bool canHaveShadow() override { return hasShadows; }

    void willShowPopover(QWindow& /*window*/, const QRect& /*place*/, int /*shadow*/) override {
        note(journal_, "willShowPopover");
    }

    void popoverShown(QWindow& /*window*/, std::function<void()> callback) override {
        note(journal_, "popoverShown");
        clickedElsewhere = std::move(callback);
    }

    void popoverHidden() override {
        note(journal_, "popoverHidden");
        clickedElsewhere = {};
    }

    void willShowSettings(QWindow& /*window*/) override { note(journal_, "willShowSettings"); }

private:
    FakeJournal* journal_;
};
