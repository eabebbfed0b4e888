// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/AdapterWatts.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

std::optional<double> watts(std::optional<double> microvolts, std::optional<double> microamperes) {
    return microvolts && microamperes && *microvolts > 0 && *microamperes > 0
               ? std::optional(*microvolts * *microamperes / 1e12)
               : std::nullopt;
}

std::optional<std::int64_t> ratedWatts(const PowerSupply& supply) {
    const auto voltage = supply.number("voltage_now");
    auto highest = supply.number("voltage_max");
    if (highest.value_or(0) <= 0)
        highest = supply.number("voltage_max_design");
    const auto contract = watts(voltage, supply.number("current_now"));
    const auto rating = watts(highest, supply.number("current_max"));
    const auto limit = supply.number("input_power_limit");
    // QUIRK: on chargers with programmable voltage the kernel's maxima are nonsense or belong to different offers. If
    // the present voltage is no lower than the maximum, the contract is what counts.
    const bool trustContract = voltage && highest && *highest > 0 && *voltage >= *highest;
    const std::array candidates{trustContract ? contract : rating, trustContract ? rating : contract,
                                limit ? std::optional(*limit / 1e6) : std::nullopt};
    for (const auto& candidate : candidates) {
        if (candidate && *candidate >= 1 && *candidate <= 300)
            return std::llround(*candidate);
    }
    return std::nullopt;
}

} // namespace

std::optional<std::int64_t> adapterWatts(const std::vector<PowerSupply>& supplies) {
    std::optional<std::int64_t> most;
    for (const PowerSupply& supply : supplies) {
        if (supply.isOnline())
            most = std::max(most, ratedWatts(supply));
    }
    return most;
}
