// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DesktopWindows.h"
#include "support/FakeJournal.h"

#include <utility>

/// Writes down what it is told of our windows.
class FakeDesktopWindows final : public DesktopWindows {
public:
    FakeJournal told;
    std::function<void()> clickedElsewhere; ///< empty while the popover is hidden

    void willShowPopover(QWindow& /*window*/) override { told.push_back("willShowPopover"); }

    void popoverShown(QWindow& /*window*/, std::function<void()> callback) override {
        told.push_back("popoverShown");
        clickedElsewhere = std::move(callback);
    }

    void popoverHidden() override {
        told.push_back("popoverHidden");
        clickedElsewhere = {};
    }

    void willShowSettings(QWindow& /*window*/) override { told.push_back("willShowSettings"); }
};
