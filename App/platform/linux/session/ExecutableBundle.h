// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Bundle.h"

/// The bundle that an executable belongs to. Either an AppDir: the nearest folder above whose "AppRun" is the
/// executable, with exactly one desktop entry. Or, outside an AppDir, a prefix: the executable is in its "bin", and
/// everything that is installed with it is there too (a build folder is no prefix, because it has no desktop entry).
/// Looked for once, so it is where the bundle was when the program started.
class ExecutableBundle final : public Bundle {
public:
    /// `executable` is an absolute path without symbolic links.
    explicit ExecutableBundle(const std::filesystem::path& executable);

    std::filesystem::path location() const override { return location_; }
    std::optional<std::string> identifier() const override { return identifier_; }
    bool isInstalled() const override { return isInstalled_; }
    std::filesystem::path program() const override;
    std::filesystem::path icon() const override;

private:
    std::filesystem::path location_;
    std::optional<std::string> identifier_;
    bool isInstalled_ = false;
};
