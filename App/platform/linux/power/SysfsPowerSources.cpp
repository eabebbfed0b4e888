// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/SysfsPowerSources.h"

#include "platform/Clock.h"
#include "platform/linux/power/SysfsScan.h"
#include "platform/linux/power/UdevMonitor.h"

#include <cmath>
#include <cstddef>
#include <utility>

namespace {

/// Batteries that cannot be read for this long are gone.
constexpr Duration timeout{10};

/// What a battery's event may be about.
struct ChargeState {
    std::size_t packs;
    bool onExternalPower;
    bool isCharging;
    long percent;

    explicit ChargeState(const PowerReading& reading)
        : packs(reading.packs.size())
        , onExternalPower(reading.onExternalPower)
        , isCharging(reading.isCharging)
        , percent(reading.maxCapacity > 0 ? std::lround(100 * reading.currentCapacity / reading.maxCapacity) : 0) {}

    /// Whether the charge alone has moved on. Many batteries send an event with each percent, and nothing else has to
    /// follow from it.
    bool isNextPercentAfter(const ChargeState& before) const {
        return packs == before.packs && onExternalPower == before.onExternalPower && isCharging == before.isCharging &&
               percent != before.percent;
    }
};

} // namespace

class SysfsPowerSources::Observation final : public Notification {
public:
    Observation(SysfsPowerSources& owner, std::function<void()> changed)
        : owner_(owner)
        , changed_(std::move(changed))
        , reports(
              owner.loop_, owner.clock_, [this] { return report(); }, [this] { return look(); }) {
        owner_.observation_ = this;
    }
    ~Observation() override { owner_.observation_ = nullptr; }
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;

private:
    SysfsPowerSources& owner_;
    std::function<void()> changed_;
    bool isOfBatteries_ = true; ///< all events since the last report

    bool report() {
        const ChargeState before(owner_.lastGood_);
        const bool isOfBatteries = std::exchange(isOfBatteries_, true);
        changed_();
        return isOfBatteries && ChargeState(owner_.lastGood_).isNextPercentAfter(before);
    }
    bool look() {
        const bool differs = owner_.scan() != owner_.given_;
        // A change seen only now, such as a status that lagged behind its plug, needs its own round of looks to settle.
        if (owner_.isUnsettled())
            reports.settle();
        return differs;
    }

public:
    void event(bool isOfBatteries) {
        isOfBatteries_ = isOfBatteries_ && isOfBatteries;
        reports.event();
    }

    ChangeDebouncer reports;
    std::unique_ptr<UdevMonitor> monitor;
};

SysfsPowerSources::SysfsPowerSources(const std::filesystem::path& sysfs, const Clock& clock, MainLoop& loop)
    : folder_(sysfs / "class/power_supply")
    , clock_(clock)
    , loop_(loop) {}

SysfsPowerSources::~SysfsPowerSources() = default;

SysfsPowerSources::Descriptions SysfsPowerSources::scan() {
    const auto supplies = scanPowerSupplies(folder_);
    PowerReading reading = PowerReading::of(supplies);
    const Duration uptime = clock_.uptime();
    if (reading.failsAfter(lastGood_, supplies)) {
        const Duration awake = uptime - clock_.slept();
        if (!failingSince_)
            failingSince_ = awake;
        if (awake - *failingSince_ < timeout) {
            Descriptions before = lastGoodDescriptions_;
            for (PackLimit& pack : before.packLimits)
                pack.limit.reset(); // firmware may have forgotten it meanwhile
            return before;
        }
    }
    failingSince_.reset();
    auto forEstimate = reading.forTimeEstimate();
    forEstimate.uptime = uptime;
    forEstimate.slept = clock_.slept();
    lastGoodDescriptions_ = {.battery = reading.description(estimate_.update(forEstimate)),
                             .registry = reading.registry(),
                             .packLimits = reading.packLimits};
    lastGood_ = std::move(reading);
    return lastGoodDescriptions_;
}

PowerSnapshot SysfsPowerSources::snapshot() {
    given_ = scan();
    // Look again soon at an unsettled reading, so that nobody waits a minute for it.
    if (observation_ != nullptr && isUnsettled())
        observation_->reports.settle();
    return {.sources = std::vector<std::optional<Value>>{Value(given_.battery)},
            .batteryProperties = [registry = given_.registry] { return std::optional(Value(registry)); },
            .packLimits = given_.packLimits};
}

std::unique_ptr<PowerSources::Notification> SysfsPowerSources::notify(std::function<void()> changed) {
    auto observation = std::make_unique<Observation>(*this, std::move(changed));
    // Without udev only the looks after an unsettled reading, and the program's own refresh, are left.
    observation->monitor =
        UdevMonitor::start([to = observation.get()](bool isOfBatteries) { to->event(isOfBatteries); });
    // Whatever happened just before the start may still be settling.
    observation->reports.settle();
    return observation;
}
