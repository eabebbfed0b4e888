// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/Lifetime.h"

#include <functional>
#include <span>

class MainLoop;

/// Decides when power-supply events are passed on. Some firmware sends several a second, so they are passed on at most
/// once a second, the first of a burst at once. Values lag behind their event, often without a second one, so after
/// each report the supplies are read again a few times, or only once where the report has explained the event, and only
/// a change is reported. Whatever is still to come when the machine falls asleep is dropped: the first refresh after
/// waking sees it anyway.
class ChangeDebouncer {
public:
    /// `report` passes a change on and says whether what was then read explains the event; `probe` reads again and says
    /// whether anything differs from what was last given out.
    ChangeDebouncer(MainLoop& loop, const Clock& clock, std::function<bool()> report, std::function<bool()> probe);

    /// An event arrived.
    void event();

    /// Something is unsettled without an event: probe later, unless that is about to happen anyway.
    void settle();

private:
    using Pauses = std::span<const Duration>;

    MainLoop& loop_;
    const Clock& clock_;
    std::function<bool()> report_;
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
    void startProbing(Pauses pauses);
    void scheduleProbe(Pauses pauses, unsigned long round);
    void dropIfSlept();
};
