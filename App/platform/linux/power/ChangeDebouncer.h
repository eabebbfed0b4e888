// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/Lifetime.h"

#include <cstddef>
#include <functional>

class MainLoop;

/// Decides when power-supply events are passed on. Some firmware sends several a second, so they are passed on at most
/// once a second, the first of a burst at once. Values lag behind their event, often without a second one, so after
/// each report the supplies are read again a few times, and only a change is reported. Whatever is still to come when
/// the machine falls asleep is dropped: the first refresh after waking sees it anyway.
class ChangeDebouncer {
public:
    /// `report` passes a change on; `probe` reads again and says whether anything differs from what was last given out.
    ChangeDebouncer(MainLoop& loop, const Clock& clock, std::function<void()> report, std::function<bool()> probe);

    /// An event arrived.
    void event();

    /// Something is unsettled without an event: probe later, unless that is about to happen anyway.
    void settle();

private:
    MainLoop& loop_;
    const Clock& clock_;
    std::function<void()> report_;
    std::function<bool()> probe_;
    bool reported_ = false;
    Duration lastReport_{};
    bool reportIsDue_ = false;
    bool probing_ = false;
    unsigned long round_ = 0;
    Duration slept_; ///< by the clock, up to the last sleep that was noticed
    unsigned long sleeps_ = 0;
    Lifetime lifetime_;

    void reportNow();
    void startProbing();
    void scheduleProbe(std::size_t number, unsigned long round);
    void dropIfSlept();
};
