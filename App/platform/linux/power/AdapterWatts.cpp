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

/// Whether this is exactly a voltage that USB Power Delivery offers (fixed supplies and extended power range), µV. UCSI
/// and Type-C drivers report the contract that way; a driver that measures is always a little off.
bool isContractVoltage(double microvolts) {
    constexpr std::array volts{5, 9, 12, 15, 20, 28, 36, 48};
    return std::any_of(volts.begin(), volts.end(), [=](int step) { return microvolts == step * 1e6; });
}

std::optional<std::int64_t> ratedWatts(const PowerSupply& supply) {
    const auto voltage = supply.number("voltage_now");
    auto highest = supply.number("voltage_max");
    if (highest.value_or(0) <= 0)
        highest = supply.number("voltage_max_design");
    // Anything else is the momentary draw, which is not the adapter's rating.
    const auto contract =
        voltage && isContractVoltage(*voltage) ? watts(voltage, supply.number("current_now")) : std::nullopt;
    const auto rating = watts(highest, supply.number("current_max"));
    const auto limit = supply.number("input_power_limit");
    // QUIRK: on chargers with programmable voltage the kernel's maxima are nonsense or belong to different offers. If
    // the present voltage is no lower than the maximum, the contract is what counts.
    const bool trustContract = voltage && highest && *highest > 0 && *voltage >= *highest;
    const auto limitWatts = limit ? std::optional(*limit / 1e6) : std::nullopt;
    const std::array candidates{trustContract ? contract : rating, trustContract ? rating : limitWatts,
                                trustContract ? limitWatts : contract};
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
