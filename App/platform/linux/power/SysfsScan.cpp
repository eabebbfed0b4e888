// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/SysfsScan.h"

#include "platform/linux/files/FileDescriptor.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

namespace {

constexpr std::size_t attributeLimit = 4096; // the kernel returns one page at most, and all of it at once

void readAttribute(int folder, const char* attribute, PowerSupply& supply) {
    const FileDescriptor file(::openat(folder, attribute, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file)
        return;
    std::array<char, attributeLimit + 1> content; // uninitialised: this is read many times for a few bytes each
    ssize_t count = 0;
    do {
        count = ::read(file.get(), content.data(), content.size());
    } while (count < 0 && errno == EINTR);
    if (count >= 0 && static_cast<std::size_t>(count) <= attributeLimit)
        supply.attributes.emplace(attribute, std::string(content.data(), static_cast<std::size_t>(count)));
}

PowerSupply readSupply(int classFolder, std::string name) {
    PowerSupply supply{.name = std::move(name), .attributes = {}};
    const FileDescriptor folder(::openat(classFolder, supply.name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return supply;
    for (const char* attribute : commonAttributes)
        readAttribute(folder.get(), attribute, supply);
    if (supply.isSystemBattery()) {
        for (const char* attribute : batteryAttributes)
            readAttribute(folder.get(), attribute, supply);
    } else if (supply.text("type") != "Battery") {
        for (const char* attribute : supplyAttributes)
            readAttribute(folder.get(), attribute, supply);
    }
    return supply;
}

} // namespace

std::vector<PowerSupply> scanPowerSupplies(const std::filesystem::path& folder) {
    std::vector<PowerSupply> supplies;
    DIR* listing = ::opendir(folder.c_str());
    if (listing == nullptr)
        return supplies;
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(listing)) {
        if (entry->d_name[0] != '.')
            names.emplace_back(entry->d_name);
    }
    // The kernel's order is that of registration, which differs from boot to boot.
    std::sort(names.begin(), names.end());
    for (std::string& name : names)
        supplies.push_back(readSupply(::dirfd(listing), std::move(name)));
    ::closedir(listing);
    return supplies;
}
