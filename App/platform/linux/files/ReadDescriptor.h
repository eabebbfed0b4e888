// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// Everything that can be read from a descriptor; empty on an error, or when there are more than `limit` bytes. There
/// is room for `expected` bytes from the start, so that a large content is read in one go.
std::optional<std::string> readDescriptor(int descriptor, std::size_t limit, std::size_t expected = 0);
