// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoadSimulation.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <limits>
#include <random>
#include <utility>

namespace {

constexpr double full = 50'000;     ///< a common laptop's battery, mWh
constexpr double gaugeSeconds = 4;  ///< period of the gauge's measurements, each the mean rate of that time
constexpr double asleepPower = 300; ///< draw of a sleeping machine
constexpr double lateSeconds = 60;  ///< delay of the rate that a slow gauge reports
constexpr double sessions = 8;      ///< of a battery that is plugged and unplugged
constexpr double eventsLast[] = {0, 1, 2, 5, 15};

class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}
    double uniform(double low, double high) { return std::uniform_real_distribution(low, high)(engine_); }
    double exponential(double mean) { return std::exponential_distribution(1 / mean)(engine_); }
    double normal(double deviation) { return std::normal_distribution(0.0, deviation)(engine_); }
    /// Any factor within the range is as likely as any other.
    double between(double low, double high) { return low * std::pow(high / low, uniform(0, 1)); }

private:
    std::mt19937_64 engine_;
};

/// The power of the machine in the next second, mW.
using Draw = std::function<double()>;

Draw noisy(Random& random, double power, double deviation) {
    return [&random, power, deviation] { return power * std::max(0.1, 1 + random.normal(deviation)); };
}

/// Alternates between two powers for random times.
Draw twoPowers(Random& random, double low, double lowSeconds, double high, double highSeconds) {
    return [&random, low, lowSeconds, high, highSeconds, isHigh = false, left = 0.0]() mutable {
        if (--left <= 0) {
            isHigh = !isHigh;
            left = random.exponential(isHigh ? highSeconds : lowSeconds);
        }
        return (isHigh ? high : low) * (1 + random.normal(0.03));
    };
}

/// Frames are decoded evenly; the network fills a buffer every 20 seconds, and scenes differ.
Draw video(Random& random) {
    return [&random, second = 0, scene = 1.0]() mutable {
        if (second++ % 90 == 0)
            scene = random.uniform(0.9, 1.1);
        const double network = second % 20 < 4 ? 2'500 : 0;
        return 9'500 * scene + network + random.normal(300);
    };
}

/// Work, video, a call and idle time in turn, 25 minutes each on average.
Draw mixedDay(Random& random) {
    std::vector<Draw> phases{twoPowers(random, 6'000, 60, 18'000, 20), video(random), noisy(random, 16'000, 0.1),
                             twoPowers(random, 4'000, 120, 20'000, 5)};
    return [&random, phases, phase = std::size_t{0}, left = 0.0]() mutable {
        if (--left <= 0) {
            phase = static_cast<std::size_t>(random.uniform(0, static_cast<double>(phases.size())));
            left = random.exponential(1500);
        }
        return phases[phase]();
    };
}

/// Four kinds of work in turn, of any power and any length.
Draw anyDay(Random& random) {
    std::vector<Draw> phases;
    std::vector<double> lengths;
    for (int i = 0; i < 4; ++i) {
        const double low = random.between(3'000, 20'000);
        const double high = low * random.between(1, 4);
        const double lowSeconds = random.between(5, 600);
        const double highSeconds = random.between(5, 600);
        phases.push_back(twoPowers(random, low, lowSeconds, high, highSeconds));
        lengths.push_back(random.between(300, 7200));
    }
    return [&random, phases, lengths, phase = std::size_t{0}, left = 0.0]() mutable {
        if (--left <= 0) {
            phase = static_cast<std::size_t>(random.uniform(0, static_cast<double>(phases.size())));
            left = random.exponential(lengths[phase]);
        }
        return phases[phase]();
    };
}

/// Turns from one power to another for good once half of the charge is gone.
Draw changesForGood(Random& random, double before, double after) {
    return [&random, before, after, drawn = 0.0]() mutable {
        const double power = (drawn < full / 2 ? before : after) * (1 + random.normal(0.05));
        drawn += power / 3600;
        return power;
    };
}

struct Setup {
    bool charging = false;
    double start = full;
    double end = 0;          ///< the amount at which it is full, or empty
    double adapter = 45'000; ///< its power, which the machine shares
    double knee = 1;         ///< from this part of full on it takes less and less, if not less anyway; 1: never
    double resistance = 0;   ///< inner resistance in ohms, which costs energy and brings the knee with it
    double amountStep = 10;  ///< the amount is reported in these steps
    double mostTold = full;  ///< larger amounts are reported as this
    double corrects = 0;     ///< at half charge the gauge finds that there is this much less
    double rateStep = 1;     ///< the rate is reported in these steps
    double rateDelay = 0;    ///< seconds until the rate is reported
    bool reportsRate = true;
    double sleepsEvery = 0;        ///< seconds awake between two sleeps of an hour; 0: never
    double batteryMinutes = 0;     ///< mean time until it is plugged in; 0: never
    double pluggedMinutes = 0;     ///< mean time until it is unplugged; 0: never
    Draw later{};                  ///< the load from the second session on, if it is another
    double countsBelow = 2 * full; ///< readings with more stored do not count
};

/// Powers at one moment.
struct Powers {
    double reported = 0; ///< at the terminals
    double moved = 0;    ///< into the cells or out of them
};

/// Three cells in series.
Powers throughResistance(const Setup& setup, bool charging, double stored, double power) {
    constexpr double chargeVoltage = 12.66;
    const double open = 10.5 + 2.1 * stored / full;
    const double ohms = setup.resistance;
    const double root = std::sqrt(std::max(0.0, open * open + (charging ? 4 : -4) * ohms * power / 1000));
    double amperes = std::abs(root - open) / (2 * ohms);
    if (charging)
        amperes = std::min(amperes, (chargeVoltage - open) / ohms);
    return {1000 * amperes * (open + (charging ? amperes : -amperes) * ohms), 1000 * amperes * open};
}

/// The powers of the battery while the machine draws `power`.
Powers flow(const Setup& setup, bool charging, double stored, double power) {
    constexpr double most = 36'000;
    constexpr double leastAtTheEnd = 3'000;
    double taken = power;
    if (charging) {
        taken = std::min(most, setup.adapter - power);
        if (stored > setup.knee * full)
            taken =
                std::min(taken, leastAtTheEnd + (most - leastAtTheEnd) * (full - stored) / ((1 - setup.knee) * full));
        taken = std::max(1'000.0, taken);
    }
    return setup.resistance > 0 ? throughResistance(setup, charging, stored, taken) : Powers{taken, taken};
}

/// A machine that goes on from second to second; a copy shows what would have come.
struct Machine {
    const Setup& setup;
    Draw draw;
    bool charging = setup.charging;
    double stored = setup.start;
    double slept = 0;
    double awake = 0;
    double rate = 0;            ///< as the gauge has measured it
    std::deque<double> rates{}; ///< that a slow gauge has not reported yet
    double gaugeSum = 0;
    double untilSleep = setup.sleepsEvery;
    double sinceEvent = 0;
    double eventPercent = std::floor(stored / full * 100);
    double correction = setup.corrects;

    double end() const { return charging == setup.charging ? setup.end : full - setup.end; }
    bool isOver() const { return charging ? stored >= end() : stored <= end(); }

    /// Whether an event asks for a look at this second.
    bool isLookedAt() {
        const double percent = std::floor(stored / full * 100);
        if (percent != eventPercent) {
            eventPercent = percent;
            sinceEvent = 0;
        }
        return std::find(std::begin(eventsLast), std::end(eventsLast), sinceEvent) != std::end(eventsLast);
    }

    TimeEstimate::Reading read() const {
        TimeEstimate::Reading reading;
        reading.uptime = Duration(1000 + awake + slept);
        reading.slept = Duration(slept);
        reading.onExternalPower = charging;
        reading.flow = charging ? TimeEstimate::Flow::charging : TimeEstimate::Flow::discharging;
        reading.batteries = "BAT0/energy ";
        reading.now = std::min(std::floor(stored / setup.amountStep) * setup.amountStep, setup.mostTold);
        reading.remaining = charging ? std::max(0.0, end() - *reading.now) : 0;
        reading.full = full;
        if (setup.reportsRate) {
            const double told = std::round(rate / setup.rateStep) * setup.rateStep;
            reading.rate = charging ? told : -told;
        }
        reading.slowest = 500;
        return reading;
    }

    void step() {
        const Powers powers = flow(setup, charging, stored, draw());
        stored += (charging ? powers.moved : -powers.moved) / 3600;
        if (stored < full / 2)
            stored -= std::exchange(correction, 0);
        gaugeSum += powers.reported;
        if (std::fmod(awake + 1, gaugeSeconds) == 0) {
            rates.push_back(gaugeSum / gaugeSeconds);
            gaugeSum = 0;
            if (static_cast<double>(rates.size()) * gaugeSeconds > setup.rateDelay) {
                rate = rates.front();
                rates.pop_front();
            }
        }
        if (setup.sleepsEvery > 0 && --untilSleep <= 0) {
            untilSleep = setup.sleepsEvery;
            slept += 3600;
            stored -= asleepPower;
            sinceEvent = -1; // the next second is the first one awake
        }
        ++awake;
        ++sinceEvent;
    }
};

SimulatedLoad simulate(std::string name, const Setup& setup, const Draw& draw, Random& random) {
    SimulatedLoad load{.name = std::move(name), .readings = {}};
    Machine machine{.setup = setup, .draw = draw};
    double nextMinute = 60 * random.uniform(0, 1);
    machine.rate = flow(setup, machine.charging, machine.stored, machine.draw()).reported;
    const bool isReplugged = setup.batteryMinutes > 0;
    for (int session = 0; session < (isReplugged ? sessions : 1); ++session) {
        const std::size_t first = load.readings.size();
        std::vector<double> awakeAt;
        double left = 60 * (machine.charging ? setup.pluggedMinutes : setup.batteryMinutes);
        left = isReplugged ? left * random.uniform(0.5, 1.5) : std::numeric_limits<double>::max();
        for (; !machine.isOver() && left > 0; --left, machine.step()) {
            const bool looks = machine.isLookedAt();
            if (!looks && machine.awake < nextMinute)
                continue;
            if (machine.awake >= nextMinute)
                nextMinute += 60;
            load.readings.push_back({machine.read(), 0, machine.stored <= setup.countsBelow});
            awakeAt.push_back(machine.awake);
        }
        Machine leftAlone = machine;
        while (!leftAlone.isOver())
            leftAlone.step();
        for (std::size_t i = 0; i < awakeAt.size(); ++i)
            load.readings[first + i].trueMinutes = (leftAlone.awake - awakeAt[i]) / 60;
        machine.charging = !machine.charging;
        machine.sinceEvent = 0;
        if (setup.later)
            machine.draw = setup.later;
    }
    return load;
}

} // namespace

std::vector<SimulatedLoad> simulateLoads(std::uint64_t seed) {
    Random random(seed);
    std::vector<SimulatedLoad> loads;
    const auto add = [&](const char* name, const Setup& setup, const Draw& draw) {
        loads.push_back(simulate(name, setup, draw, random));
    };
    constexpr double percent = full / 100;
    const auto work = twoPowers(random, 6'000, 60, 15'000, 20);

    add("steady", {}, noisy(random, 8'000, 0.03));
    add("bursty", {}, twoPowers(random, 5'000, 90, 22'000, 40));
    add("video", {}, video(random));
    add("spikes", {}, twoPowers(random, 4'000, 120, 20'000, 5)); // idle, with spikes of a few seconds
    add("sleeps", {.sleepsEvery = 2700}, twoPowers(random, 5'000, 60, 15'000, 30));
    add("taper", {.charging = true, .start = 0.2 * full, .end = full, .knee = 0.8}, noisy(random, 6'000, 0.1));
    add("to 80 %", {.charging = true, .start = 0.2 * full, .end = 0.8 * full},
        twoPowers(random, 5'000, 60, 22'000, 30));
    add("rounded", {.rateStep = 2'000}, noisy(random, 5'500, 0.1));
    add("late", {.rateDelay = lateSeconds}, twoPowers(random, 6'000, 120, 18'000, 60));
    add("mixed", {.sleepsEvery = 7200}, mixedDay(random));
    add("heavier", {}, changesForGood(random, 7'000, 15'000));
    // The amount is reported in steps of a hundredth.
    add("1 %", {.amountStep = percent}, work);
    add("1 %, 8W", {.amountStep = percent}, noisy(random, 8'000, 0.03));
    add("1 %, 24W", {.amountStep = percent}, noisy(random, 24'000, 0.03));
    add("held", {.mostTold = 0.96 * full}, noisy(random, 8'000, 0.03)); // "full" for a quarter of an hour
    add("mended", {.corrects = 3 * percent}, noisy(random, 8'000, 0.03));
    // No rate is reported; the last two also report the amount in coarse steps only.
    add("no rate", {.reportsRate = false}, work);
    add("no, 1 %", {.amountStep = percent, .reportsRate = false}, work);
    add("no, fill",
        {.charging = true, .start = 0.2 * full, .end = 0.8 * full, .amountStep = percent, .reportsRate = false},
        noisy(random, 6'000, 0.1));

    // A load that has changed for good; what comes before the change cannot be foreseen.
    add("rises", {.countsBelow = full / 2}, changesForGood(random, 7'000, 15'000));
    add("falls", {.countsBelow = full / 2}, changesForGood(random, 15'000, 7'000));
    add("dimming", {}, twoPowers(random, 6'000, 120, 11'000, 240));
    add("calls", {}, twoPowers(random, 6'500, 2700, 19'000, 1800));
    add("resists", {.resistance = 0.25}, work);
    add("any day", {}, anyDay(random));
    add("any day2", {.rateDelay = lateSeconds, .sleepsEvery = 5400}, anyDay(random));
    const Setup replugged{.start = 0.9 * full, .knee = 0.8, .batteryMinutes = 60, .pluggedMinutes = 30};
    add("plugs", replugged, twoPowers(random, 5'000, 90, 22'000, 40));
    Setup otherLoad = replugged;
    otherLoad.later = noisy(random, 16'000, 0.05);
    add("plugs, 2", otherLoad, noisy(random, 8'000, 0.05));
    const auto fill = [](double from, double knee) {
        return Setup{.charging = true, .start = from * full, .end = full, .knee = knee};
    };
    add("knee", fill(0.2, random.uniform(0.6, 0.9)), noisy(random, 6'000, 0.1));
    add(
        "knee, 1%",
        [&] {
            Setup setup = fill(0.2, random.uniform(0.6, 0.9));
            setup.amountStep = percent;
            return setup;
        }(),
        work);
    add("top", fill(0.85, random.uniform(0.6, 0.9)), noisy(random, 6'000, 0.1));
    Setup setup = fill(0.2, 1);
    setup.resistance = 0.25;
    add("resists+", setup, work);
    setup = fill(0.2, 0.8);
    setup.rateDelay = lateSeconds;
    add("late+", setup, twoPowers(random, 5'000, 60, 22'000, 30));
    setup = fill(0.2, 0.8);
    setup.adapter = 22'000;
    add("weak", setup, twoPowers(random, 4'000, 120, 19'000, 60));
    setup.adapter = 25'000;
    add("weak, 2", setup, twoPowers(random, 6'500, 1800, 23'000, 1200));
    setup = fill(random.uniform(0.05, 0.6), random.uniform(0.6, 0.95));
    setup.adapter = random.between(25'000, 65'000);
    setup.rateDelay = random.uniform(0, lateSeconds);
    add("any fill", setup, anyDay(random));
    setup = fill(random.uniform(0.05, 0.6), random.uniform(0.6, 0.95));
    setup.adapter = random.between(25'000, 65'000);
    setup.resistance = random.uniform(0.05, 0.3);
    add("anyfill2", setup, anyDay(random));
    setup = fill(0.2, 0.8);
    setup.adapter = 12'000;
    add("slow", setup, noisy(random, 6'000, 0.1));
    // Two charges one after the other: what the first one has shown serves the second.
    add("again",
        {.charging = true,
         .start = 0.3 * full,
         .end = full,
         .knee = random.uniform(0.6, 0.9),
         .batteryMinutes = 90,
         .pluggedMinutes = 240},
        work);
    Setup silent = replugged;
    silent.reportsRate = false;
    add("plugs, 3", silent, work);
    return loads;
}
