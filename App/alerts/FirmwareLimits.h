// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "alerts/LimitWatch.h"
#include "platform/Lifetime.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class Files;

/// The watch on the firmware's charge limit, with its memory in a file of ours. A file that cannot be read counts as an
/// empty memory; one that cannot be written is written on the next occasion.
class FirmwareLimits {
public:
    /// The file.
    static std::filesystem::path file(const Files& files);

    /// Starts to load the file.
    explicit FirmwareLimits(Files& files);
    FirmwareLimits(const FirmwareLimits&) = delete;
    FirmwareLimits& operator=(const FirmwareLimits&) = delete;

    /// Called when the file has been loaded.
    std::function<void()> onLoad;

    /// Whether the file has been loaded; nothing may be run before.
    bool isLoaded() const { return isLoaded_; }

    /// See `LimitWatch::run`. Writes the memory if it has changed.
    LimitWatch::Outcome run(const std::vector<PackLimit>& packs, bool pluggedIn, Duration uptime, bool canDeliver,
                            bool prime);

    /// Whether this machine has, or had, such a limit.
    bool concernsMachine() const { return watch_.concernsMachine(); }

private:
    Files& files_;
    LimitWatch watch_;
    bool isLoaded_ = false;
    bool mustWrite_ = false; ///< the latest attempt has failed
    Lifetime lifetime_;
};
