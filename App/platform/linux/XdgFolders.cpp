// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/XdgFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

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
