// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// Defined by each target: ends the program if an input makes something go wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Whether an input is accepted or refused as a whole. Empty if the target refuses none.
std::optional<bool> isTaken(const std::string& text);

/// Ends the program if a condition does not hold.
void require(bool holds, const char* what);
