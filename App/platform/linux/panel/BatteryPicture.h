// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

#include <optional>
#include <string>
#include <string_view>

/// What a picture of the battery shows.
struct BatteryPicture {
    enum class Sign {
        None,
        Low,  ///< an exclamation mark
        Bolt, ///< charging
        Plug, ///< plugged in and not charging
        Tick, ///< fully charged
    };

    std::string text;           ///< digits, ':' and 'h': "64", "1:45", "12h"; empty for the battery alone
    std::optional<int> percent; ///< how full the battery is drawn, 0 to 100; empty for a battery that is all sign
    Sign sign = Sign::None;

    bool operator==(const BatteryPicture&) const = default;
};

/// What the glyph of this symbol shows, "battery.50" or "percent.64.bolt", or the symbol of a time, which has no glyph
/// in a file: "time.1:45.64.bolt". Empty for any other.
std::optional<BatteryPicture> batteryPicture(std::string_view symbol);

/// The picture as a square of `size` pixels: dark on a light tile, so that either the one or the other is visible on a
/// panel of any colour. ARGB32, premultiplied.
QImage draw(const BatteryPicture& picture, int size);
