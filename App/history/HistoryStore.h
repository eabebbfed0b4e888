// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <optional>

/// The charge of the last days. So far it remembers nothing, and so knows no answer and has nothing to write.
class HistoryStore {
public:
    /// Since when the machine has been plugged in without a break; empty when the history cannot say.
    std::optional<Date> pluggedSinceEstimate(Date /*now*/) const { return std::nullopt; }

    /// Writes the history to its file now.
    void save(Date /*now*/) {}
};
