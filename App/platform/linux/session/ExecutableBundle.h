// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Bundle.h"

/// The bundle that an executable stands in, found by where that is. An AppDir: the nearest folder above whose "AppRun"
/// is the executable, with one desktop entry in it. Or, in no AppDir, a prefix: the executable is in its "bin", and all
/// that is installed with it is there as well; a build folder is none, because it has no desktop entry. Looked for
/// once; the bundle is where it was when the program was started.
class ExecutableBundle final : public Bundle {
public:
    /// `executable` is an absolute path without links.
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
