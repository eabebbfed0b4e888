// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeCalendar.h"

#include "support/CalendarContract.h"

namespace {

class FakeBackend {
public:
    FakeBackend() { calendar_.minutesEastOfUtc = 330; }
    Calendar& calendar() { return calendar_; }

private:
    FakeCalendar calendar_;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, CalendarContract, FakeBackend);
