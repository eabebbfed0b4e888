// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PowerSources.h"

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// The charge limits that were last seen in force, for each battery; what is kept of them across starts.
struct LimitMemory {
    /// How a battery is known again: firmware gives no better number that every battery has.
    struct Battery {
        std::string model;                  ///< one line
        std::optional<std::int64_t> design; ///< at least 1, mWh or mAh
        auto operator<=>(const Battery&) const = default;

        static Battery of(const PackLimit& pack);
    };

    std::map<Battery, std::int64_t> limits; ///< percent, 1..99

    bool operator==(const LimitMemory&) const = default;

    /// Remembers a limit. Of more batteries than anybody has, some other is forgotten.
    void remember(const Battery& battery, std::int64_t limit);

    /// The content of the file: a line for each battery, with limit, capacity or "-", and model.
    std::string encoded() const;

    /// Reads such a file; lines that are wrong in any way are left out.
    static LimitMemory decode(std::string_view text);
};
