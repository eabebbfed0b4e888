// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/power/PowerProfileChoice.h"

#include <QJsonObject>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The power supplies of a real machine, with the correct reading for them.
struct Fixture {
    struct Device {
        std::string name;
        std::map<std::string, std::optional<std::string>> attributes; ///< empty: the file exists but cannot be read
    };

    std::string name;
    std::string machine; ///< what people call it
    std::vector<Device> devices;
    PowerProfileChoice powerProfile;
    QJsonObject expected; ///< empty if nobody has said yet what is right

    /// Throws if the file cannot be read or is no fixture. The devices and attributes have names that files in one
    /// folder can have.
    static Fixture load(const std::filesystem::path& file);

    /// The files of all fixtures in the source tree, sorted.
    static std::vector<std::filesystem::path> all();

    /// Writes the devices as a power-supply class below `sysfs`, an ordinary folder. Reading an attribute that is
    /// marked unreadable then fails with EISDIR.
    void writeTree(const std::filesystem::path& sysfs) const;
};
