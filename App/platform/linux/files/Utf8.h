// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

/// Whether `text` is well-formed UTF-8 (RFC 3629: shortest forms, no surrogates, nothing above U+10FFFF).
bool isUtf8(std::string_view text);
