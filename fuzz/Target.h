// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// What each target defines: it ends the program when an input makes something go wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Whether an input is taken, and not turned away as a whole. Empty where nothing is turned away.
std::optional<bool> isTaken(const std::string& text);

/// Ends the program where something does not hold.
void require(bool holds, const char* what);
