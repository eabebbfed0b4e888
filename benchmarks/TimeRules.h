// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/power/TimeEstimate.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// The time shown: whole minutes to empty or to full.
using Told = std::optional<std::int64_t>;

/// Takes readings one after the other.
using Tell = std::function<Told(const TimeEstimate::Reading&)>;

/// A way to tell the time.
struct Contender {
    std::string name;
    std::function<Tell()> make;
};

/// The ways of other programs, simple ones, and ours at the end.
std::vector<Contender> contenders();
