// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/AlertKind.h"

#include <string>

/// A reminder that is due.
struct PendingAlert {
    AlertKind kind = AlertKind::chargeLimit;
    std::string title;
    std::string body;
    bool operator==(const PendingAlert&) const = default;
};
