// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/SystemCalendar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

namespace {

class SystemCalendarTest : public testing::Test {
protected:
    SystemCalendarTest() {
        if (const char* zone = std::getenv("TZ"))
            before_ = zone;
    }
    ~SystemCalendarTest() override { ::setenv("TZ", before_.c_str(), 1); }

    Calendar::TimeOfDay at(const char* zone, double seconds) {
        ::setenv("TZ", zone, 1);
        return calendar_.timeOfDay(Date(Duration(seconds)));
    }

private:
    std::string before_ = "UTC";
    SystemCalendar calendar_;
};

void expectTime(Calendar::TimeOfDay time, int hour, int minute) {
    EXPECT_EQ(time.hour, hour);
    EXPECT_EQ(time.minute, minute);
}

} // namespace

TEST_F(SystemCalendarTest, TellsLocalTimeAndFollowsTheZone) {
    expectTime(at("UTC0", 1731650399.75), 5, 59);
    expectTime(at("CET-1", 1731650399.75), 6, 59);
    expectTime(at("IST-5:30", 1731650399.75), 11, 29);
    expectTime(at("UTC0", -1), 23, 59);
}

TEST_F(SystemCalendarTest, TellsMidnightForWhatIsNoLocalTime) {
    expectTime(at("UTC0", 1e300), 0, 0);
    expectTime(at("UTC0", -1e300), 0, 0);
    expectTime(at("UTC0", std::nan("")), 0, 0);
}
