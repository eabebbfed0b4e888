// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/ProfileOffer.h"

#include <algorithm>
#include <string_view>

bool offersPowerSaver(const std::vector<OfferedProfile>& profiles) {
    return std::ranges::any_of(profiles, [](const OfferedProfile& profile) {
        const auto name = profile.find("Profile");
        if (name == profile.end() || name->second != "power-saver")
            return false;
        // "Driver" is the only one before version 0.20; later it is kept beside those for each kind, and may be
        // "multiple".
        return std::ranges::any_of(profile, [](const auto& entry) {
            const auto& [key, driver] = entry;
            const bool isDriver = key == "Driver" || key == "CpuDriver" || key == "PlatformDriver";
            return isDriver && !driver.empty() && driver != "placeholder";
        });
    });
}
