// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/PluginLoader.h"

#include "platform/qt/ProgramFiles.h"

#include <dlfcn.h>

#include <filesystem>
#include <string>

void* pluginFunction(const char* plugin, const char* function) {
    const std::filesystem::path executable = runningExecutable();
    // The kernel appends this to the path of an executable that has been replaced.
    if (!executable.is_absolute() || executable.native().ends_with(" (deleted)"))
        return nullptr;
    const auto file = prefixOf(executable) / "lib/velmora" / (std::string(plugin) + ".so");
    void* loaded = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    return loaded != nullptr ? ::dlsym(loaded, function) : nullptr;
}
