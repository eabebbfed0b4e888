// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Umockdev.h"

#include "support/Fixture.h"

#include <umockdev.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace {

/// A null-terminated list of C strings, alternately keys and values, as umockdev takes it.
std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (std::string& text : texts)
        list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

} // namespace

SimulatedSupplies::SimulatedSupplies() : testbed_(umockdev_testbed_new()) {
    if (umockdev_in_mock_environment() == FALSE)
        throw std::runtime_error("start this through umockdev-wrapper");
}

SimulatedSupplies::~SimulatedSupplies() {
    g_object_unref(testbed_);
}

void SimulatedSupplies::add(const std::string& device, const Attributes& attributes) {
    std::vector<std::string> files;
    std::vector<std::string> properties{"DEVTYPE", "power_supply", "POWER_SUPPLY_NAME", device};
    for (const auto& [name, value] : attributes) {
        files.insert(files.end(), {name, value + "\n"});
        properties.insert(properties.end(), {"POWER_SUPPLY_" + upper(name), value});
    }
    auto fileList = pointers(files);
    auto propertyList = pointers(properties);
    char* path = umockdev_testbed_add_devicev(testbed_, "power_supply", device.c_str(), nullptr, fileList.data(),
                                              propertyList.data());
    paths_[device] = path;
    g_free(path);
}

void SimulatedSupplies::add(const Fixture& fixture) {
    for (const Fixture::Device& device : fixture.devices) {
        Attributes attributes;
        for (const auto& [name, value] : device.attributes) {
            if (value)
                attributes[name] = *value;
        }
        add(device.name, attributes);
    }
}

void SimulatedSupplies::set(const std::string& device, const std::string& attribute, const std::string& value) {
    umockdev_testbed_set_attribute(testbed_, paths_.at(device).c_str(), attribute.c_str(), (value + "\n").c_str());
}

void SimulatedSupplies::fail(const std::string& device, const std::string& attribute) {
    char* root = umockdev_testbed_get_root_dir(testbed_);
    std::filesystem::remove(root + paths_.at(device) + "/" + attribute);
    g_free(root);
}

void SimulatedSupplies::event(const std::string& device, const std::string& action) {
    umockdev_testbed_uevent(testbed_, paths_.at(device).c_str(), action.c_str());
}

void SimulatedSupplies::remove(const std::string& device) {
    umockdev_testbed_remove_device(testbed_, paths_.at(device).c_str());
    paths_.erase(device);
}
