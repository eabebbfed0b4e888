// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoadSimulation.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <random>
#include <utility>

namespace {

constexpr double full = 50'000;     ///< a common laptop's battery, mWh
constexpr double gaugeSeconds = 4;  ///< period of the gauge's measurements, each the mean rate of that time
constexpr double asleepPower = 300; ///< draw of a sleeping machine
constexpr double lateSeconds = 60;  ///< delay of the rate that a slow gauge reports
constexpr double eventsLast[] = {0, 1, 2, 5, 15};

class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}
    double uniform(double low, double high) { return std::uniform_real_distribution(low, high)(engine_); }
    double exponential(double mean) { return std::exponential_distribution(1 / mean)(engine_); }
    double normal(double deviation) { return std::normal_distribution(0.0, deviation)(engine_); }

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

/// Light work that turns into heavy work for good once half of the charge is gone.
Draw heavierForGood(Random& random) {
    return [&random, drawn = 0.0]() mutable {
        const double power = (drawn < full / 2 ? 7'000 : 15'000) * (1 + random.normal(0.05));
        drawn += power / 3600;
        return power;
    };
}

struct Setup {
    bool charging = false;
    double start = full;
    double end = 0;         ///< the amount at which it is full, or empty
    bool tapers = false;    ///< charges more and more slowly above 80 %
    double amountStep = 10; ///< the amount is reported in these steps
    double mostTold = full; ///< larger amounts are reported as this
    double corrects = 0;    ///< at half charge the gauge finds that there is this much less
    double rateStep = 1;    ///< the rate is reported in these steps
    double rateDelay = 0;   ///< seconds until the rate is reported
    bool reportsRate = true;
    double sleepsEvery = 0; ///< seconds awake between two sleeps of an hour; 0: never
};

/// The power at the battery's terminals while the machine draws `power`.
double flow(const Setup& setup, double stored, double power) {
    if (!setup.charging)
        return power;
    constexpr double adapter = 45'000;
    constexpr double most = 36'000;
    constexpr double leastAtTheEnd = 3'000;
    double taken = std::min(most, adapter - power);
    if (setup.tapers && stored > 0.8 * full)
        taken = std::min(taken, leastAtTheEnd + (most - leastAtTheEnd) * (full - stored) / (0.2 * full));
    return std::max(1'000.0, taken);
}

SimulatedLoad simulate(std::string name, const Setup& setup, const Draw& draw, Random& random) {
    SimulatedLoad load{.name = std::move(name), .readings = {}};
    std::vector<double> awakeAt;
    std::deque<double> rates; // that a slow gauge has not reported yet
    double stored = setup.start;
    double slept = 0;
    double awake = 0;
    double gaugeSum = 0;
    double untilSleep = setup.sleepsEvery;
    double sinceEvent = 0;
    double eventPercent = std::floor(stored / full * 100);
    double correction = setup.corrects;
    double nextMinute = 60 * random.uniform(0, 1);
    double rate = flow(setup, stored, draw());
    const auto isOver = [&] { return setup.charging ? stored >= setup.end : stored <= setup.end; };

    for (; !isOver(); ++awake, ++sinceEvent) {
        const double percent = std::floor(stored / full * 100);
        if (percent != eventPercent) {
            eventPercent = percent;
            sinceEvent = 0;
        }
        const bool looks = std::find(std::begin(eventsLast), std::end(eventsLast), sinceEvent) != std::end(eventsLast);
        if (looks || awake >= nextMinute) {
            if (awake >= nextMinute)
                nextMinute += 60;
            TimeEstimate::Reading reading;
            reading.uptime = Duration(1000 + awake + slept);
            reading.slept = Duration(slept);
            reading.onExternalPower = setup.charging;
            reading.flow = setup.charging ? TimeEstimate::Flow::charging : TimeEstimate::Flow::discharging;
            reading.batteries = "BAT0/energy ";
            reading.now = std::min(std::floor(stored / setup.amountStep) * setup.amountStep, setup.mostTold);
            reading.remaining = setup.charging ? std::max(0.0, setup.end - *reading.now) : 0;
            if (setup.reportsRate) {
                const double told = std::round(rate / setup.rateStep) * setup.rateStep;
                reading.rate = setup.charging ? told : -told;
            }
            reading.slowest = 500;
            load.readings.push_back({reading, 0});
            awakeAt.push_back(awake);
        }

        const double moved = flow(setup, stored, draw());
        stored += (setup.charging ? moved : -moved) / 3600;
        if (stored < full / 2)
            stored -= std::exchange(correction, 0);
        gaugeSum += moved;
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
    }
    for (std::size_t i = 0; i < awakeAt.size(); ++i)
        load.readings[i].trueMinutes = (awake - awakeAt[i]) / 60;
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
    add("taper", {.charging = true, .start = 0.2 * full, .end = full, .tapers = true}, noisy(random, 6'000, 0.1));
    add("to 80 %", {.charging = true, .start = 0.2 * full, .end = 0.8 * full},
        twoPowers(random, 5'000, 60, 22'000, 30));
    add("rounded", {.rateStep = 2'000}, noisy(random, 5'500, 0.1));
    add("late", {.rateDelay = lateSeconds}, twoPowers(random, 6'000, 120, 18'000, 60));
    add("mixed", {.sleepsEvery = 7200}, mixedDay(random));
    add("heavier", {}, heavierForGood(random));
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
    return loads;
}
