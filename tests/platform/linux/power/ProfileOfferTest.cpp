// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ProfileOffer.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(ProfileOffer, NeedsPowerSaverWithARealDriver) {
    struct Row {
        const char* what;
        std::vector<OfferedProfile> profiles;
        bool offers;
    };
    const Row rows[] = {
        {"nothing", {}, false},
        {"power-profiles-daemon 0.12", {{{"Profile", "power-saver"}, {"Driver", "platform_profile"}}}, true},
        {"the same where it knows nothing", {{{"Profile", "power-saver"}, {"Driver", "placeholder"}}}, false},
        {"0.20 with a driver for the processor only",
         {{{"Profile", "power-saver"},
           {"CpuDriver", "intel_pstate"},
           {"PlatformDriver", "placeholder"},
           {"Driver", "multiple"}}},
         true},
        {"0.20 where it knows nothing",
         {{{"Profile", "power-saver"}, {"PlatformDriver", "placeholder"}, {"Driver", "placeholder"}}},
         false},
        {"tuned-ppd",
         {{{"Profile", "balanced"}, {"Driver", "tuned"}}, {{"Profile", "power-saver"}, {"Driver", "tuned"}}},
         true},
        {"a real driver for another profile",
         {{{"Profile", "power-saver"}, {"Driver", "placeholder"}},
          {{"Profile", "performance"}, {"Driver", "amd_pstate"}}},
         false},
        {"no driver", {{{"Profile", "power-saver"}}}, false},
        {"an empty one", {{{"Profile", "power-saver"}, {"Driver", ""}}}, false},
        {"no name", {{{"Driver", "intel_pstate"}}}, false},
        {"another spelling", {{{"Profile", "Power-Saver"}, {"Driver", "intel_pstate"}}}, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(offersPowerSaver(row.profiles), row.offers) << row.what;
}

} // namespace
