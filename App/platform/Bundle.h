// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// The application bundle that the running program belongs to: a folder of its own that may be anywhere, or what is
/// installed below a prefix, among the files of other programs.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The folder of the bundle, for instance "/opt/Velmora.app", or its prefix, for instance "/usr"; outside a bundle
    /// the folder of the executable.
    virtual std::filesystem::path location() const = 0;

    /// The name of the bundle's desktop entry without its suffix; empty outside a bundle.
    virtual std::optional<std::string> identifier() const = 0;

    /// Whether the bundle is what is installed below a prefix, whose folder has any name; false outside a bundle.
    virtual bool isInstalled() const = 0;

    /// What starts the bundle, for instance "/opt/Velmora.app/AppRun" or "/usr/bin/velmora". Of no use outside one.
    virtual std::filesystem::path program() const = 0;

    /// The picture that stands for the bundle, an SVG file. Of no use outside one.
    virtual std::filesystem::path icon() const = 0;
};
