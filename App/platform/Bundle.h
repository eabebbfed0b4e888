// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// The application bundle of the running program: either a self-contained folder, which may be anywhere, or an
/// installation below a prefix, among other programs' files.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The bundle's folder, for instance "/opt/Velmora.app", or its prefix, for instance "/usr"; outside a bundle, the
    /// folder of the executable.
    virtual std::filesystem::path location() const = 0;

    /// The name of the bundle's desktop entry without its suffix; empty outside a bundle.
    virtual std::optional<std::string> identifier() const = 0;

    /// Whether the bundle is an installation below a prefix, whose folder may have any name; false outside a bundle.
    virtual bool isInstalled() const = 0;

    /// The program that starts the bundle, for instance "/opt/Velmora.app/AppRun" or "/usr/bin/velmora". Meaningless
    /// outside a bundle.
    virtual std::filesystem::path program() const = 0;

    /// The bundle's icon, an SVG file. Meaningless outside a bundle.
    virtual std::filesystem::path icon() const = 0;
};
