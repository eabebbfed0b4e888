// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/XdgFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <string>

namespace {

std::filesystem::path home() {
    const char* variable = std::getenv("HOME");
    if (variable != nullptr && *variable == '/')
        return variable;
    const passwd* user = getpwuid(getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "/";
}

std::filesystem::path folder(const char* name, const char* fallback) {
    const char* variable = std::getenv(name);
    return variable != nullptr && *variable == '/' ? std::filesystem::path(variable) : home() / fallback;
}

} // namespace

std::filesystem::path xdgDataHome() {
    return folder("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path xdgConfigHome() {
    return folder("XDG_CONFIG_HOME", ".config");
}

std::filesystem::path xdgStateHome() {
    return folder("XDG_STATE_HOME", ".local/state");
}

std::vector<std::filesystem::path> xdgConfigFolders() {
    const char* variable = std::getenv("XDG_CONFIG_DIRS");
    std::istringstream list(variable != nullptr && *variable != '\0' ? variable : "/etc/xdg");
    std::vector<std::filesystem::path> folders;
    for (std::string folder; std::getline(list, folder, ':');) {
        if (folder.starts_with('/'))
            folders.emplace_back(folder);
    }
    return folders;
}
