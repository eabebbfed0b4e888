// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Calendar.h"
#include "support/PlainHistory.h"

#include <cstdint>
#include <vector>

/// Plays a random history, determined by the seed, to a store on `calendar`, and expects after each step that the store
/// answers, keeps and writes the same as `PlainHistory` does with the same local time. The history happens around one
/// of the `places`, in seconds from 1970.
void playRandomHistory(std::uint64_t seed, const Calendar& calendar, const PlainHistory::LocalClock& localClock,
                       const std::vector<std::int64_t>& places);
