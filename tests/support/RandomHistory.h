// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Calendar.h"
#include "support/PlainHistory.h"

#include <cstdint>
#include <vector>

/// Plays a history that the seed decides to a store on `calendar`, and expects at each step that the store says, keeps
/// and writes what the plain rules say with the same local time. The history happens around one of the `places`, in
/// seconds from 1970.
void playRandomHistory(std::uint64_t seed, const Calendar& calendar, const PlainHistory::LocalClock& localClock,
                       const std::vector<std::int64_t>& places);
