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

/// The text in a variant that somebody sent, the name of a theme, font or mode; empty for any other type, which is not
/// converted, and for a text longer than any name.
inline std::optional<std::string> asText(const QVariant& value) {
    constexpr qsizetype most = 4096;
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    const QString text = value.toString();
    return text.size() <= most ? std::optional(text.toStdString()) : std::nullopt;
}
