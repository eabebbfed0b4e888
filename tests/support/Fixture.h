// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// What a real machine showed, with the reading that is right for it.
struct Fixture {
    struct Device {
        std::string name;
        std::map<std::string, std::optional<std::string>> attributes; ///< empty: the file is there but cannot be read
    };

    std::string name;
    std::vector<Device> devices;
    QJsonObject expected;

    static Fixture load(const std::filesystem::path& file);

    /// The files of all fixtures of the tree, in order.
    static std::vector<std::filesystem::path> all();

    /// Writes the devices as a power-supply class below `sysfs`, an ordinary folder. Reading an attribute that cannot
    /// be read then fails, with EISDIR.
    void writeTree(const std::filesystem::path& sysfs) const;
};
