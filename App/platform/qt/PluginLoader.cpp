// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/PluginLoader.h"

#include <dlfcn.h>

#include <string>
#include <system_error>

std::filesystem::path runningExecutable() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::filesystem::path prefixOf(const std::filesystem::path& executable) {
    return executable.parent_path().parent_path();
}

std::filesystem::path programFile(const std::filesystem::path& belowPrefix) {
    // Looked up once: an executable that is replaced while we run is moved elsewhere before it is removed.
    static const std::filesystem::path prefix = prefixOf(runningExecutable());
    return prefix / belowPrefix;
}

void* pluginFunction(const char* plugin, const char* function) {
    const std::filesystem::path executable = runningExecutable();
    // The kernel appends this to the path of an executable that has been replaced.
    if (!executable.is_absolute() || executable.native().ends_with(" (deleted)"))
        return nullptr;
    const auto file = prefixOf(executable) / "lib/velmora" / (std::string(plugin) + ".so");
    void* loaded = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    return loaded != nullptr ? ::dlsym(loaded, function) : nullptr;
}
