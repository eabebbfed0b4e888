// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariant>

#include <optional>
#include <string>

/// What somebody sent, if it is a text; numbers are not made into one.
inline std::optional<std::string> asText(const QVariant& value) {
    return value.typeId() == QMetaType::QString ? std::optional(value.toString().toStdString()) : std::nullopt;
}
