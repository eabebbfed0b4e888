// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Appearance.h"

#include <optional>
#include <string_view>

/// The colours in a "kdeglobals" file, where Plasma keeps those that the user has chosen; empty if any of them is
/// missing or is no colour.
std::optional<Appearance::Colours> kdeColours(std::string_view file);
