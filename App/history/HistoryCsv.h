// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/SampleList.h"

#include <string>

/// The samples as CSV: a header, then one line for each, "2026-11-15T08:00:00Z,80,true,true". Times are in UTC, with
/// the fraction of the second cut off. Each line ends in a line feed.
std::string historyCsv(const SampleList& samples);
