// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SystemSounds.h"

#include <string>
#include <vector>

/// Records sounds instead of playing them.
class FakeSystemSounds final : public SystemSounds {
public:
    std::vector<std::string> played; ///< names, and "default" for the desktop's own

    void play(std::string_view name) override { played.emplace_back(name); }
    void playDefault() override { played.emplace_back("default"); }
};
