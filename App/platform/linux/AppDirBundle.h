// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Bundle.h"

/// The AppDir that the program runs from: the nearest folder above the executable whose "AppRun" is that executable,
/// with one desktop entry in it. Looked for once; the bundle is where it was when the program was started.
class AppDirBundle final : public Bundle {
public:
    /// `executable` is an absolute path.
    explicit AppDirBundle(const std::filesystem::path& executable);

    /// The executable that this process runs; empty where the system does not tell.
    static std::filesystem::path runningExecutable();

    std::filesystem::path location() const override { return location_; }
    std::optional<std::string> identifier() const override { return identifier_; }

private:
    std::filesystem::path location_;
    std::optional<std::string> identifier_;
};
