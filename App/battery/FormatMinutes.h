// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

/// A duration as text: "45 min", "2 h", "2 h 5 min". Anything below one minute, even a negative count, is "1 min": an
/// estimate is never shown as zero.
std::string formatMinutes(std::int64_t minutes);
