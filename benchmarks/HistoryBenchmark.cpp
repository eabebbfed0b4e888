// SPDX-License-Identifier: GPL-3.0-or-later
#ifdef VELMORA_DESKTOP
#include "HistoryFileBenchmark.h"
#endif
#include "MonthOfSamples.h"
#include "history/HistoryCsv.h"
#include "history/HistoryFile.h"
#include "history/HistoryStore.h"
#include "support/FakeCalendar.h"
#include "support/FakeClock.h"
#include "support/FakeFiles.h"

#include <benchmark/benchmark.h>

#include <simdjson.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace {

const std::string& monthText() {
    static const std::string text = encodeHistory(monthOfSamples()).value();
    return text;
}

void countBytes(benchmark::State& state, std::size_t each) {
    state.SetBytesProcessed(static_cast<std::int64_t>(each) * state.iterations());
}

// The baselines for loading: copying the bytes, and the parser alone, which looks at each value once and keeps none.

void copyTheText(benchmark::State& state) {
    const std::string& text = monthText();
    std::string copy = text;
    for ([[maybe_unused]] auto _ : state) {
        std::memcpy(copy.data(), text.data(), text.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    countBytes(state, text.size());
}
BENCHMARK(copyTheText)->Unit(benchmark::kMillisecond);

void parseOnly(benchmark::State& state) {
    const simdjson::padded_string text(monthText());
    for ([[maybe_unused]] auto _ : state) {
        simdjson::ondemand::parser parser;
        simdjson::ondemand::document document = parser.iterate(text);
        for (simdjson::ondemand::object sample : document.get_array()) {
            benchmark::DoNotOptimize(double(sample["t"]));
            benchmark::DoNotOptimize(std::int64_t(sample["p"]));
            benchmark::DoNotOptimize(bool(sample["c"]));
            benchmark::DoNotOptimize(bool(sample["a"]));
        }
    }
    countBytes(state, text.size());
}
BENCHMARK(parseOnly)->Unit(benchmark::kMillisecond);

void decode(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(decodeHistory(monthText()));
    countBytes(state, monthText().size());
}
BENCHMARK(decode)->Unit(benchmark::kMillisecond);

void encode(benchmark::State& state) {
    const SampleList samples = monthOfSamples();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(encodeHistory(samples));
    countBytes(state, monthText().size());
}
BENCHMARK(encode)->Unit(benchmark::kMillisecond);

void csv(benchmark::State& state) {
    const SampleList samples = monthOfSamples();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(historyCsv(samples));
    countBytes(state, historyCsv(samples).size());
}
BENCHMARK(csv)->Unit(benchmark::kMillisecond);

/// A store with a month of samples, with files in memory.
struct Month {
    explicit Month(int intervals = 43'200) { store.samples = monthOfSamples(intervals); }

    FakeFiles files;
    FakeClock clock{monthEnd()};
    FakeCalendar calendar;
    HistoryStore store{files, clock, calendar};
};

void storeFromMemory(benchmark::State& state) {
    Month month;
    month.store.save(monthEnd());
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(HistoryStore(month.files, month.clock, month.calendar));
    countBytes(state, monthText().size());
}
BENCHMARK(storeFromMemory)->Unit(benchmark::kMillisecond);

void samplesOfSevenDays(benchmark::State& state) {
    const Month month;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(
            std::ranges::count_if(month.store.samplesSince(monthEnd() - std::chrono::days(7)), &Sample::c));
}
BENCHMARK(samplesOfSevenDays)->Unit(benchmark::kMillisecond);

/// One reading after the program has not run for half a month.
void dropHalfOfTheMonth(benchmark::State& state) {
    BatteryState battery;
    battery.hasBattery = true;
    const Date later = monthEnd() + std::chrono::days(15);
    Month month;
    const SampleList samples = month.store.samples;
    month.store.save(later);
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        month.store.samples = samples;
        month.store.samples.push_back({.t = monthEnd().time_since_epoch().count()});
        state.ResumeTiming();
        month.store.record(battery, later, true);
    }
}
BENCHMARK(dropHalfOfTheMonth)->Unit(benchmark::kMillisecond);

/// A reading at the end of each interval, which drops the oldest sample. The periodic writing is not part of it. The
/// time must not depend on the argument.
void recordWithoutWriting(benchmark::State& state) {
    const auto intervals = static_cast<int>(state.range(0));
    const Duration interval = Duration(30.0 * 86'400 / intervals);
    Month month(intervals);
    month.store.save(Date(Duration(1e15)));
    BatteryState battery;
    battery.hasBattery = true;
    battery.isCharging = battery.pluggedIn = month.store.samples.back().a;
    Date now = monthEnd();
    for ([[maybe_unused]] auto _ : state) {
        battery.percent = (battery.percent + 1) % 100;
        month.store.record(battery, now, false);
        now += interval;
    }
    state.counters["samples"] = static_cast<double>(month.store.samples.size());
    state.counters["writes"] = static_cast<double>(month.files.replacedPaths.size() - 1);
}
BENCHMARK(recordWithoutWriting)->Arg(4'320)->Arg(43'200);

} // namespace

int main(int argc, char** argv) {
#ifdef VELMORA_DESKTOP
    if (argc == 3 && std::string(argv[1]) == loadOnly)
        return printMemoryWhileLoading(argv[2]);
#endif
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
