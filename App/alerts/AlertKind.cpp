// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/AlertKind.h"

std::string_view rawValue(AlertKind kind) {
    switch (kind) {
    case AlertKind::chargeLimit:
        return "chargeLimit";
    case AlertKind::low:
        return "low";
    case AlertKind::tooLong:
        return "tooLong";
    case AlertKind::health:
        return "health";
    case AlertKind::lowPower:
        return "lowPower";
    }
    return {};
}

std::optional<AlertKind> alertKind(std::string_view raw) {
    for (const AlertKind kind : allAlertKinds) {
        if (rawValue(kind) == raw)
            return kind;
    }
    return std::nullopt;
}
