// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/power/PowerSupply.h"

#include <cstdint>
#include <optional>
#include <vector>

/// The rated power of the strongest connected adapter, whole watts, 1..300; empty when none reports it.
std::optional<std::int64_t> adapterWatts(const std::vector<PowerSupply>& supplies);
