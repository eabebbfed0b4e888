// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

/// The calls to several fakes, in one common order.
using FakeJournal = std::vector<std::string>;

inline void note(FakeJournal* journal, std::string entry) {
    if (journal != nullptr)
        journal->push_back(std::move(entry));
}
