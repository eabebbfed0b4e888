// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// Reads a descriptor to its end; empty on an error, or if there are more than `limit` bytes. Makes room for `expected`
/// bytes first, so that a large file is read in one go.
std::optional<std::string> readDescriptor(int descriptor, std::size_t limit, std::size_t expected = 0);
