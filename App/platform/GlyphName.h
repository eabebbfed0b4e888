// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

/// The name in the icon theme of the glyph for a symbol name: "velmora-battery-100-bolt-symbolic" for
/// "battery.100.bolt". The ending tells panels to draw it in their own colour.
std::string glyphIconName(std::string_view symbol);
