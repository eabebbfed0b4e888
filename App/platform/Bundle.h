// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// The application bundle that the running program belongs to.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The folder of the bundle, for instance "/opt/Velmora.app"; outside a bundle the folder of the executable.
    virtual std::filesystem::path location() const = 0;

    /// The name of the bundle's desktop entry without its suffix; empty outside a bundle.
    virtual std::optional<std::string> identifier() const = 0;
};
