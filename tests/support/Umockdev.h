// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <string>

struct Fixture;
using UMockdevTestbed = struct _UMockdevTestbed; // NOLINT(bugprone-reserved-identifier): umockdev's name

/// The power supplies of a machine that does not exist: while this object lives, /sys and udev show its devices and no
/// others to this process. The process must have been started by umockdev-wrapper.
class SimulatedSupplies {
public:
    using Attributes = std::map<std::string, std::string>;

    SimulatedSupplies();
    ~SimulatedSupplies();
    SimulatedSupplies(const SimulatedSupplies&) = delete;
    SimulatedSupplies& operator=(const SimulatedSupplies&) = delete;

    /// Adds a device; attributes are given without the line feed that the kernel adds.
    void add(const std::string& device, const Attributes& attributes);

    /// Adds the devices of a fixture. Unreadable attributes are left out, because umockdev cannot make a read fail.
    void add(const Fixture& fixture);

    void set(const std::string& device, const std::string& attribute, const std::string& value);

    /// Removes an attribute, which is the closest that umockdev comes to a failing read.
    void fail(const std::string& device, const std::string& attribute);

    /// Sends a udev event, "change", "add" or "remove".
    void event(const std::string& device, const std::string& action = "change");

    /// Removes a device, without an event.
    void remove(const std::string& device);

private:
    UMockdevTestbed* testbed_;
    std::map<std::string, std::string> paths_;
};
