// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PowerSources.h"
#include "platform/linux/power/ChangeDebouncer.h"
#include "platform/linux/power/PowerReading.h"
#include "platform/linux/power/TimeEstimate.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

class Clock;
class MainLoop;

/// The kernel's power-supply class: every snapshot reads the attribute files again; udev only says when.
class SysfsPowerSources final : public PowerSources {
public:
    /// `sysfs` is the mount point of sysfs, "/sys".
    SysfsPowerSources(const std::filesystem::path& sysfs, const Clock& clock, MainLoop& loop);
    ~SysfsPowerSources() override;

    PowerSnapshot snapshot() override;
    [[nodiscard]] std::unique_ptr<Notification> notify(std::function<void()> changed) override;

private:
    struct Descriptions {
        Dictionary battery;
        Dictionary registry;
        std::vector<PackLimit> packLimits;
        bool operator==(const Descriptions&) const = default;
    };
    class Observation;

    std::filesystem::path folder_;
    const Clock& clock_;
    MainLoop& loop_;
    TimeEstimate estimate_;
    PowerReading lastGood_;
    Descriptions lastGoodDescriptions_;
    std::optional<Duration> failingSince_; ///< measured in the time that the machine was awake
    Descriptions given_;
    Observation* observation_ = nullptr;

    Descriptions scan();
    bool isUnsettled() const { return estimate_.isSettling() || failingSince_.has_value(); }
};
