// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/Sample.h"

#include <deque>
#include <optional>
#include <string>

/// A second opinion on what a history file holds, by another parser; empty when any part of it is not as it must be.
std::optional<std::deque<Sample>> strictlyDecoded(const std::string& text);
