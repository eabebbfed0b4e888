// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/OwnModule.h"

#include "platform/linux/AppDirBundle.h"

#include <dlfcn.h>

#include <string>

void* functionOfModule(const char* module, const char* function) {
    const std::filesystem::path executable = AppDirBundle::runningExecutable();
    // What the kernel says of a file that has been replaced.
    if (!executable.is_absolute() || executable.native().ends_with(" (deleted)"))
        return nullptr;
    // Wherever the bundle was put.
    const auto file = executable.parent_path().parent_path() / "lib/velmora" / (std::string(module) + ".so");
    void* loaded = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    return loaded != nullptr ? ::dlsym(loaded, function) : nullptr;
}
