// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/OwnModule.h"

#include "platform/linux/ExecutableBundle.h"

#include <dlfcn.h>

#include <string>

void* functionOfModule(const char* module, const char* function) {
    const std::filesystem::path executable = ExecutableBundle::runningExecutable();
    // What the kernel says of a file that has been replaced.
    if (!executable.is_absolute() || executable.native().ends_with(" (deleted)"))
        return nullptr;
    const auto file = ExecutableBundle::prefixOf(executable) / "lib/velmora" / (std::string(module) + ".so");
    void* loaded = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    return loaded != nullptr ? ::dlsym(loaded, function) : nullptr;
}
