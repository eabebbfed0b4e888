// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/TemporaryFolder.h"

#include <filesystem>
#include <string>
#include <vector>

/// One file of each kind that `cmake --install` puts below a prefix.
inline const std::vector<std::string> installedFiles = {
    "bin/velmora",
    "share/applications/app.velmora.Velmora.desktop",
    "share/icons/hicolor/scalable/apps/app.velmora.Velmora.svg",
    "share/velmora/icons/hicolor/scalable/status/velmora-battery-100-symbolic.svg",
    "share/sounds/velmora/Glass.wav",
    "lib/velmora/velmora-sound.so",
};

/// Writes them as text files that cannot be run.
inline void makePrefix(const std::filesystem::path& prefix) {
    for (const std::string& name : installedFiles) {
        std::filesystem::create_directories((prefix / name).parent_path());
        write(prefix / name, name);
    }
}
