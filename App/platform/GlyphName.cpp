// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/GlyphName.h"

#include <algorithm>

std::string glyphIconName(std::string_view symbol) {
    std::string name(symbol);
    std::replace(name.begin(), name.end(), '.', '-');
    return "velmora-" + name + "-symbolic";
}
