// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

/// The icon name of a symbol's glyph: "velmora-battery-100-bolt-symbolic" for "battery.100.bolt". The "-symbolic"
/// suffix tells panels to draw it in their own colour.
std::string glyphIconName(std::string_view symbol);
