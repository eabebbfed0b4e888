// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ChangeDebouncer.h"

#include "platform/MainLoop.h"

#include <array>
#include <utility>

namespace {

constexpr Duration leastInterval{1};
/// Seconds from one look to the next: 1, 2, 5 and 15 seconds after the report.
constexpr std::array<Duration, 4> pauses{Duration(1), Duration(1), Duration(3), Duration(10)};

} // namespace

ChangeDebouncer::ChangeDebouncer(MainLoop& loop, const Clock& clock, std::function<void()> report,
                                 std::function<bool()> look)
    : loop_(loop)
    , clock_(clock)
    , report_(std::move(report))
    , look_(std::move(look)) {}

void ChangeDebouncer::event() {
    if (reportIsDue_)
        return;
    const Duration since = clock_.uptime() - lastReport_;
    if (!reported_ || since >= leastInterval) {
        reportNow();
        return;
    }
    reportIsDue_ = true;
    loop_.after(leastInterval - since, lifetime_.guard([this] { reportNow(); }));
}

void ChangeDebouncer::settle() {
    if (!looking_)
        startLooking();
}

void ChangeDebouncer::reportNow() {
    reported_ = true;
    reportIsDue_ = false;
    lastReport_ = clock_.uptime();
    startLooking();
    report_();
}

void ChangeDebouncer::startLooking() {
    looking_ = true;
    scheduleLook(0, ++round_);
}

void ChangeDebouncer::scheduleLook(std::size_t number, unsigned long round) {
    loop_.after(pauses[number], lifetime_.guard([this, number, round] {
        if (round != round_)
            return;
        looking_ = number + 1 < pauses.size();
        if (looking_)
            scheduleLook(number + 1, round);
        // A pending report reads anyway.
        if (!reportIsDue_ && look_()) {
            lastReport_ = clock_.uptime();
            reported_ = true;
            report_();
        }
    }));
}
