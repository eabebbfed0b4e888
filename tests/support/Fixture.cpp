// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Fixture.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

Fixture Fixture::load(const fs::path& file) {
    QFile source(QString::fromStdString(file.string()));
    if (!source.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + file.string());
    const QJsonObject content = QJsonDocument::fromJson(source.readAll()).object();
    Fixture fixture{
        .name = file.stem().string(), .devices = {}, .expected = content[QLatin1String("expected")].toObject()};
    if (fixture.expected.isEmpty())
        throw std::runtime_error("no fixture: " + file.string());
    for (const auto& entry : content[QLatin1String("devices")].toArray()) {
        Device device{.name = entry.toObject()[QLatin1String("name")].toString().toStdString(), .attributes = {}};
        const QJsonObject attributes = entry.toObject()[QLatin1String("attributes")].toObject();
        for (auto attribute = attributes.begin(); attribute != attributes.end(); ++attribute)
            device.attributes[attribute.key().toStdString()] =
                attribute->isString() ? std::optional(attribute->toString().toStdString()) : std::nullopt;
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
