// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <string>
#include <vector>

/// An entry of the property "Profiles" of a power-profiles service: its texts, by key.
using OfferedProfile = std::map<std::string, std::string, std::less<>>;

/// Whether the service can really save power: it has the profile "power-saver", and a driver for it. On hardware that
/// it knows nothing about, power-profiles-daemon offers the profile with drivers named "placeholder", which do nothing.
bool offersPowerSaver(const std::vector<OfferedProfile>& profiles);
