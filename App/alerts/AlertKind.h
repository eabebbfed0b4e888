// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <string_view>

/// What a reminder is about. The raw value is the identifier of its notification.
enum class AlertKind { chargeLimit, low, tooLong, health, lowPower };

/// Every kind, in the order of the cases.
inline constexpr std::array allAlertKinds{AlertKind::chargeLimit, AlertKind::low, AlertKind::tooLong, AlertKind::health,
                                          AlertKind::lowPower};

/// The stable name of a kind, for instance "chargeLimit".
std::string_view rawValue(AlertKind kind);

/// The kind of that name; empty when there is none.
std::optional<AlertKind> alertKind(std::string_view rawValue);
