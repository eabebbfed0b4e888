// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ChangeDebouncer.h"

#include "platform/MainLoop.h"

#include <array>
#include <utility>

namespace {

constexpr Duration leastInterval{1};
/// `Clock::slept()` is the difference of two clocks that are read one after the other, so it is never quite the same.
constexpr Duration shortestSleep{1};
/// Seconds from one probe to the next: 1, 2, 5 and 15 seconds after the report.
constexpr std::array usualPauses{Duration(1), Duration(1), Duration(3), Duration(10)};
/// After an event that is explained, in case another one was hidden behind it. Most values lag by a second or two.
constexpr std::array explainedPauses{Duration(3)};

} // namespace

ChangeDebouncer::ChangeDebouncer(MainLoop& loop, const Clock& clock, std::function<bool()> report,
                                 std::function<bool()> probe)
    : loop_(loop)
    , clock_(clock)
    , report_(std::move(report))
    , probe_(std::move(probe))
    , slept_(clock.slept()) {}

void ChangeDebouncer::event() {
    dropIfSlept();
    if (reportIsDue_)
        return;
    const Duration since = clock_.uptime() - lastReport_;
    if (!reported_ || since >= leastInterval) {
        reportNow();
        return;
    }
    reportIsDue_ = true;
    loop_.after(leastInterval - since, lifetime_.guard([this, sleeps = sleeps_] {
        dropIfSlept();
        if (sleeps == sleeps_)
            reportNow();
    }));
}

void ChangeDebouncer::settle() {
    dropIfSlept();
    if (!probing_)
        startProbing(usualPauses);
}

void ChangeDebouncer::reportNow() {
    reported_ = true;
    reportIsDue_ = false;
    lastReport_ = clock_.uptime();
    const bool isExplained = report_();
    if (!isExplained)
        startProbing(usualPauses);
    else if (!probing_)
        startProbing(explainedPauses);
}

void ChangeDebouncer::startProbing(Pauses pauses) {
    probing_ = true;
    scheduleProbe(pauses, ++round_);
}

void ChangeDebouncer::scheduleProbe(Pauses pauses, unsigned long round) {
    loop_.after(pauses.front(), lifetime_.guard([this, pauses, round] {
        dropIfSlept();
        if (round != round_)
            return;
        probing_ = pauses.size() > 1;
        if (probing_)
            scheduleProbe(pauses.subspan(1), round);
        // A pending report reads anyway.
        if (!reportIsDue_ && probe_()) {
            lastReport_ = clock_.uptime();
            reported_ = true;
            report_();
        }
    }));
}

void ChangeDebouncer::dropIfSlept() {
    const Duration slept = clock_.slept();
    if (slept - slept_ < shortestSleep)
        return;
    slept_ = slept;
    ++sleeps_;
    ++round_;
    probing_ = false;
    reportIsDue_ = false;
}
