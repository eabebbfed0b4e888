// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <cstdint>

/// One battery reading in the history. The names are those of the keys in the history file.
struct Sample {
    double t = 0;       ///< seconds since 1970-01-01 00:00:00 UTC
    std::int64_t p = 0; ///< charge in whole percent
    bool c = false;     ///< was charging
    bool a = false;     ///< was on external power

    Date date() const { return Date(Duration(t)); }

    bool operator==(const Sample&) const = default;
};
