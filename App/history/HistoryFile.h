// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/SampleList.h"

#include <optional>
#include <string>

/// The history file: one JSON array with an object for each sample,
/// [{"t":1731650000.25,"p":80,"c":true,"a":true},…], times in seconds since 1970.

/// The samples in file order; empty when any part of the text is invalid. White space, the order of the keys and
/// unknown keys do not matter; of a repeated key the last one counts.
std::optional<SampleList> decodeHistory(std::string text);

/// The text for the samples, without white space; numbers are as short as possible while reading back the same. Empty
/// when a time is not finite, which JSON cannot express.
std::optional<std::string> encodeHistory(const SampleList& samples);
