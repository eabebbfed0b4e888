// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/SampleList.h"

#include <optional>
#include <string>

/// A second opinion on a history file, by another parser; empty if any part of it is invalid.
std::optional<SampleList> strictlyDecoded(const std::string& text);
