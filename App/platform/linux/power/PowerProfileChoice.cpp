// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/PowerProfileChoice.h"

bool PowerProfileChoice::isLowPower() const {
    for (const bool hasLeft : {false, true}) {
        for (const std::string_view name : {newName, oldName}) {
            const auto daemon = daemons.find(name);
            if (daemon != daemons.end() && daemon->second.hasLeft == hasLeft)
                return daemon->second.profile == "power-saver";
        }
    }
    if (!firmware)
        return false;
    const std::string profile = firmware->substr(0, firmware->find_last_not_of(" \t\r\n") + 1);
    return profile == "low-power" || profile == "quiet";
}
