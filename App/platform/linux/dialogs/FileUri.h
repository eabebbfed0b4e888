// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

/// The file of this machine that a URI names (RFC 8089), byte for byte, whatever its name is encoded in; empty for a
/// URI of another kind or another machine, and for one that is none.
std::optional<std::filesystem::path> fileOfUri(std::string_view uri);
