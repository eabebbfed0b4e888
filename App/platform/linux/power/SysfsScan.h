// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/power/PowerSupply.h"

#include <filesystem>
#include <vector>

/// Reads the devices of a power-supply class folder, sorted by name, each attribute file once and only those that
/// matter for the device's type. Unreadable files are left out; a missing folder means a machine without power
/// supplies.
std::vector<PowerSupply> scanPowerSupplies(const std::filesystem::path& folder);
