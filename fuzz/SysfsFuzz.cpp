// SPDX-License-Identifier: GPL-3.0-or-later
#include "Target.h"
#include "alerts/Prefs.h"
#include "battery/BatteryReader.h"
#include "platform/linux/power/PowerReading.h"
#include "support/FakePowerSaving.h"
#include "support/FakePowerSources.h"
#include "views/text/PopoverText.h"
#include "views/text/StatusItemText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <ranges>
#include <string_view>
#include <vector>

// An input is a sequence of power supplies, in lines:
//   @BAT0           the following lines are about this device, which exists from now on
//   status=Full     one of its attribute files has this content
//   -status         that file is gone
//   !BAT0           the device is gone
//   +60             a minute later the devices are read
//   z3600           the machine sleeps for an hour, then they are read
// At the end they are read once more.

namespace {

constexpr std::size_t mostReadings = 40;
constexpr std::size_t mostSupplies = 6;

using Attributes = std::map<std::string, std::string, std::less<>>;

/// The devices at one moment.
struct Scene {
    std::map<std::string, Attributes, std::less<>> supplies;
    Duration uptime{100};
    Duration slept{};
};

/// An attribute as read from its file.
using Content = std::string (*)(const std::string& value);

std::string asTheKernelWrites(const std::string& value) {
    return value + '\n';
}

std::string withBlanks(const std::string& value) {
    return " \t" + value + std::string("\r\n\0", 3);
}

std::vector<PowerSupply> suppliesOf(const Scene& scene, Content content) {
    std::vector<PowerSupply> supplies;
    for (const auto& [name, attributes] : scene.supplies) {
        PowerSupply supply{.name = name, .attributes = {}};
        for (const auto& [attribute, value] : attributes)
            supply.attributes.emplace(attribute, content(value));
        supplies.push_back(std::move(supply));
    }
    return supplies;
}

/// Only those attributes that are read from a device of its kind.
PowerSupply asScanned(const PowerSupply& whole) {
    PowerSupply supply{.name = whole.name, .attributes = {}};
    const auto take = [&](const auto& names) {
        for (const char* name : names)
            if (const auto found = whole.attributes.find(name); found != whole.attributes.end())
                supply.attributes.insert(*found);
    };
    take(commonAttributes);
    if (supply.isSystemBattery())
        take(batteryAttributes);
    else if (supply.text("type") != "Battery")
        take(supplyAttributes);
    return supply;
}

bool holdsOnlyNumbersThatAreSome(const Dictionary& dictionary) {
    return std::ranges::all_of(dictionary, [](const auto& entry) {
        const auto* number = std::get_if<double>(&entry.second.content);
        const Dictionary* inner = entry.second.dictionary();
        return (number == nullptr || std::isfinite(*number)) &&
               (inner == nullptr || holdsOnlyNumbersThatAreSome(*inner));
    });
}

/// A second opinion on the kernel's numbers: an optional minus and digits that fit, nothing else.
std::optional<std::int64_t> slowlyRead(std::string_view text) {
    const auto isBlank = [](char c) { return std::string_view(" \t\r\n\v\f\0", 7).find(c) != std::string_view::npos; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    const bool isNegative = text.starts_with('-');
    if (isNegative)
        text.remove_prefix(1);
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos)
        return std::nullopt;
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    constexpr std::string_view largest = "9223372036854775807";
    constexpr std::string_view lowest = "9223372036854775808";
    const std::string_view limit = isNegative ? lowest : largest;
    if (text.size() > limit.size() || (text.size() == limit.size() && text > limit))
        return std::nullopt;
    std::uint64_t number = 0;
    for (const char digit : text)
        number = number * 10 + static_cast<std::uint64_t>(digit - '0');
    return static_cast<std::int64_t>(isNegative ? 0 - number : number);
}

void checkAttributes(const PowerSupply& supply) {
    for (const auto& [name, content] : supply.attributes)
        require(supply.integer(name) == slowlyRead(content), "a number is read as it is written");
}

void checkRegistry(const PowerReading& reading, const Dictionary& registry) {
    for (const char* key : {"CycleCount", "DesignCapacity", "MaxCapacity", "Voltage"}) {
        const Value* value = find(registry, key);
        require(value == nullptr || value->integer().value_or(-1) >= 0, "what is counted is not negative");
    }
    // No computer draws more than 300 W from a pack, and no pack has less than a volt.
    const double most = 300e3 * static_cast<double>(reading.packs.size()) + 1;
    if (const Value* value = find(registry, "Amperage"))
        require(std::abs(value->number().value()) <= most, "no more flows than can");
}

void checkState(const BatteryState& state, const PowerReading& reading) {
    constexpr std::int64_t hour = 60; // minutes
    require(state.hasBattery == !reading.packs.empty(), "there is a battery where one counts");
    require(state.percent >= 0 && state.percent <= 100, "a percentage is one");
    require(state.minutesToEmpty.value_or(0) >= 0 && state.minutesToEmpty.value_or(0) <= 48 * hour,
            "it lasts from now to two days");
    require(state.minutesToFull.value_or(0) >= 0 && state.minutesToFull.value_or(0) <= 20 * hour,
            "it fills between now and twenty hours");
    require(!state.minutesToEmpty || (!state.pluggedIn && !state.isCharging), "only a battery in use runs empty");
    require(!state.minutesToFull || state.isCharging, "only a battery that takes charge fills");
    require(!state.isCharged || state.pluggedIn, "only on external power is it charged");
    require(state.adapterWatts.value_or(1) >= 1 && state.adapterWatts.value_or(1) <= 300, "an adapter is one");
    require(state.cycleCount.value_or(1) >= 1, "cycles are counted from one");
    require(state.temperatureC.value_or(20) > -20 && state.temperatureC.value_or(20) < 100, "a temperature is one");
    require(state.voltage.value_or(1) >= 1, "a voltage is one");
    require(!state.healthPercent() || (*state.healthPercent() > 29 && *state.healthPercent() < 131), "a health is one");
}

void checkTexts(const BatteryState& state) {
    Prefs prefs;
    prefs.showPercent = prefs.showTime = true;
    // "100 % · 48:00" is the longest text that there is room for.
    require(statusItemTitle(state, prefs).size() <= std::string_view(" 100% · 48:00").size(), "the title is short");
    require(!state.stateText().empty() && !statusItemToolTip(state).empty(), "there is something to say");
    for (const std::string& symbol : state.symbolNames())
        require(!symbol.empty(), "a glyph has a name");
    if (const auto gauge = cycleGauge(state))
        require(gauge->filled >= 0 && gauge->filled <= cyclesOfAGauge, "a gauge is not filled beyond its ends");
    for (const DetailRow& row : detailRows(state)) {
        require(!row.label.empty() && !row.value.empty(), "a detail says something");
        require(row.value.find("nan") == std::string::npos && row.value.find("inf") == std::string::npos,
                "a detail is a number where it is one");
    }
}

/// The result of one reading.
struct Told {
    Dictionary description;
    Dictionary registry;
    bool fails = false;
    bool operator==(const Told&) const = default;
};

/// Reads again and again, as the program does.
class Reader {
public:
    explicit Reader(Content content) : content_(content) {}

    Told read(const Scene& scene) {
        const std::vector<PowerSupply> supplies = suppliesOf(scene, content_);
        PowerReading reading = PowerReading::of(supplies);
        auto forEstimate = reading.forTimeEstimate();
        forEstimate.uptime = scene.uptime;
        forEstimate.slept = scene.slept;
        Told told{.description = reading.description(estimate_.update(forEstimate)),
                  .registry = reading.registry(),
                  .fails = reading.failsAfter(last_, supplies)};
        for (const PowerSupply& supply : supplies)
            checkAttributes(supply);
        check(reading, told);
        last_ = std::move(reading);
        return told;
    }

private:
    Content content_;
    TimeEstimate estimate_;
    PowerReading last_;

    static void check(const PowerReading& reading, const Told& told) {
        require(holdsOnlyNumbersThatAreSome(told.description), "the description holds no infinity");
        require(holdsOnlyNumbersThatAreSome(told.registry), "the registry holds no infinity");
        checkRegistry(reading, told.registry);
        FakePowerSources sources;
        sources.sources = std::vector<std::optional<Value>>{Value(told.description)};
        sources.registry = told.registry;
        const FakePowerSaving powerSaving;
        const BatteryState state = BatteryReader(sources, powerSaving).read();
        checkState(state, reading);
        checkTexts(state);
    }
};

/// A single pack that reports its percentage is believed.
void checkPercent(const Scene& scene, const Told& told) {
    const PowerSupply* battery = nullptr;
    const std::vector<PowerSupply> supplies = suppliesOf(scene, asTheKernelWrites);
    for (const PowerSupply& supply : supplies) {
        if (supply.text("type") != "Battery")
            continue;
        if (battery != nullptr)
            return;
        battery = &supply;
    }
    const auto capacity =
        battery != nullptr && battery->isSystemBattery() ? battery->integer("capacity") : std::nullopt;
    if (!capacity || *capacity < 0)
        return;
    const Value* current = find(told.description, "Current Capacity");
    require(current != nullptr && current->number() == static_cast<double>(std::min<std::int64_t>(*capacity, 100)),
            "a pack that tells its percentage is believed");
}

/// What changes without any power supplies, or with one more device that reports nothing.
void checkWhatDoesNotMatter(const Scene& scene, const Told& told) {
    const auto tell = [&](const std::vector<PowerSupply>& supplies) {
        const PowerReading reading = PowerReading::of(supplies);
        return std::pair(reading.description({}), reading.registry());
    };
    const std::vector<PowerSupply> supplies = suppliesOf(scene, asTheKernelWrites);
    const auto whole = tell(supplies);
    require(whole.second == told.registry, "the registry does not depend on what was before");

    std::vector<PowerSupply> scanned;
    std::ranges::transform(supplies, std::back_inserter(scanned), asScanned);
    require(tell(scanned) == whole, "what is not read of a device is not needed");

    std::vector<PowerSupply> more = supplies;
    more.push_back({.name = "~mouse",
                    .attributes = {{"type", "Battery\n"},
                                   {"scope", "Device\n"},
                                   {"capacity", "1\n"},
                                   {"status", "Discharging\n"},
                                   {"voltage_now", "1500000\n"}}});
    require(tell(more) == whole, "a mouse is not the machine");
}

double secondsOf(std::string_view text) {
    unsigned number = 0;
    std::from_chars(text.data(), text.data() + std::min<std::size_t>(text.size(), 7), number);
    return number;
}

void tellTheStory(std::string_view story) {
    Scene scene;
    Attributes* subject = nullptr;
    Reader reader(asTheKernelWrites);
    Reader again(asTheKernelWrites);
    Reader blanks(withBlanks);
    std::size_t readings = 0;
    const auto read = [&] {
        if (++readings > mostReadings)
            return;
        const Told told = reader.read(scene);
        require(again.read(scene) == told, "the same readings come to the same");
        require(blanks.read(scene) == told, "blanks around a value do not matter");
        checkPercent(scene, told);
        checkWhatDoesNotMatter(scene, told);
    };
    while (!story.empty()) {
        const std::size_t end = std::min(story.find('\n'), story.size());
        const std::string_view line = story.substr(0, end);
        story.remove_prefix(std::min(end + 1, story.size()));
        if (line.empty())
            continue;
        const std::string_view rest = line.substr(1);
        const std::size_t equals = line.find('=');
        if (line.front() == '@') {
            if (scene.supplies.size() < mostSupplies || scene.supplies.contains(rest))
                subject = &scene.supplies[std::string(rest)];
        } else if (line.front() == '!') {
            scene.supplies.erase(std::string(rest));
            subject = nullptr;
        } else if (line.front() == '+' || line.front() == 'z') {
            const Duration passed(secondsOf(rest));
            scene.uptime += passed;
            if (line.front() == 'z')
                scene.slept += passed;
            read();
        } else if (line.front() == '-' && subject != nullptr) {
            subject->erase(std::string(rest));
        } else if (equals != std::string_view::npos && subject != nullptr) {
            subject->insert_or_assign(std::string(line.substr(0, equals)), std::string(line.substr(equals + 1)));
        }
    }
    read();
}

} // namespace

std::optional<bool> isTaken(const std::string& /*text*/) {
    return std::nullopt; // an unreadable attribute only counts as missing
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tellTheStory({reinterpret_cast<const char*>(data), size});
    return 0;
}
