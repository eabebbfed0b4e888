// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Fixture.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr qint64 mostBytes = 256 * 1024;

/// Whether a file in sysfs may have this name; it names no other folder.
bool isFileName(const std::string& name) {
    return !name.empty() && name.size() <= 255 && name.front() != '.' &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

PowerProfileChoice readPowerProfile(const QJsonObject& content) {
    PowerProfileChoice choice;
    const QJsonObject daemons = content[QLatin1String("powerProfiles")].toObject();
    for (auto daemon = daemons.begin(); daemon != daemons.end(); ++daemon)
        choice.daemons[daemon.key().toStdString()] = {.profile = daemon->toString().toStdString()};
    const QJsonValue firmware = content[QLatin1String("platformProfile")];
    if (firmware.isString())
        choice.firmware = firmware.toString().toStdString();
    return choice;
}

} // namespace

Fixture Fixture::load(const fs::path& file) {
    QFile source(QString::fromStdString(file.string()));
    if (!source.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + file.string());
    // It may come from anybody.
    const auto require = [&](bool isRight, const char* what) {
        if (!isRight)
            throw std::runtime_error(file.string() + " is no fixture: " + what);
    };
    const QByteArray bytes = source.read(mostBytes + 1);
    require(bytes.size() <= mostBytes, "it is too large");
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    require(document.isObject() && document[QLatin1String("devices")].isArray(), "it has no list of devices");
    const QJsonObject content = document.object();
    Fixture fixture{.name = file.stem().string(),
                    .machine = content[QLatin1String("machine")].toString().toStdString(),
                    .devices = {},
                    .powerProfile = readPowerProfile(content),
                    .expected = content[QLatin1String("expected")].toObject()};
    std::set<std::string> names;
    for (const auto& entry : content[QLatin1String("devices")].toArray()) {
        Device device{.name = entry.toObject()[QLatin1String("name")].toString().toStdString(), .attributes = {}};
        require(isFileName(device.name) && names.insert(device.name).second, "a device has no name of its own");
        const QJsonObject attributes = entry.toObject()[QLatin1String("attributes")].toObject();
        for (auto attribute = attributes.begin(); attribute != attributes.end(); ++attribute) {
            const std::string name = attribute.key().toStdString();
            require(isFileName(name), "an attribute has no name that a file may have");
            require(attribute->isString() || attribute->isNull(), "an attribute is neither a text nor null");
            device.attributes[name] =
                attribute->isString() ? std::optional(attribute->toString().toStdString()) : std::nullopt;
        }
        fixture.devices.push_back(std::move(device));
    }
    return fixture;
}

std::vector<fs::path> Fixture::all() {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(VELMORA_FIXTURES)) {
        if (entry.path().extension() == ".json")
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void Fixture::writeTree(const fs::path& sysfs) const {
    for (const Device& device : devices) {
        const fs::path folder = sysfs / "class/power_supply" / device.name;
        fs::create_directories(folder);
        for (const auto& [attribute, value] : device.attributes) {
            if (value)
                std::ofstream(folder / attribute) << *value << '\n';
            else
                fs::create_directory(folder / attribute);
        }
    }
}
