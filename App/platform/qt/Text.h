// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariant>

#include <optional>
#include <string>
#include <string_view>

/// UTF-8 as a QString; invalid sequences become replacement characters.
inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// The text in a variant that somebody sent; empty for any other type, which is not converted.
inline std::optional<std::string> asText(const QVariant& value) {
    return value.typeId() == QMetaType::QString ? std::optional(value.toString().toStdString()) : std::nullopt;
}
