// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryFileBenchmark.h"

#include "MonthOfSamples.h"
#include "history/HistoryFile.h"
#include "history/HistoryStore.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/files/PosixFiles.h"
#include "platform/linux/session/SystemCalendar.h"
#include "support/FakeClock.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

// The history with the real file system below the temporary folder, and the real calendar.

namespace {

/// A store with a month of samples in its file.
struct MonthOnDisk {
    MonthOnDisk() {
        store.samples = monthOfSamples();
        store.save(monthEnd());
    }

    TemporaryFolder home;
    PosixFiles files{home.path};
    FakeClock clock{monthEnd()};
    SystemCalendar calendar;
    HistoryStore store{files, clock, calendar};
    std::filesystem::path file = home.path / "Velmora/history.json";
};

/// The value of a line of /proc/self/status, such as "VmHWM:", in bytes.
double memory(const std::string& name) {
    std::ifstream status("/proc/self/status");
    std::string word;
    double kibibytes = 0;
    while (status >> word) {
        if (word == name && status >> kibibytes)
            return kibibytes * 1024;
    }
    return 0;
}

/// The peak of resident memory while a store loads its file, and the memory kept afterwards, both above the resident
/// memory before, as multiples of the file's size. Measured in a process of its own with as small a heap as possible.
void memoryWhileLoading(benchmark::State& state) {
    const MonthOnDisk month;
    double peak = 0;
    double kept = 0;
    for ([[maybe_unused]] auto _ : state) {
        const std::string command =
            "/proc/" + std::to_string(::getpid()) + "/exe " + loadOnly + ' ' + month.home.path.string();
        std::FILE* const child = ::popen(command.c_str(), "r");
        if (!child || std::fscanf(child, "%lf %lf", &peak, &kept) != 2 || ::pclose(child) != 0)
            state.SkipWithError("the process failed");
    }
    const auto size = static_cast<double>(std::filesystem::file_size(month.file));
    state.counters["file"] = size;
    state.counters["peak/file"] = peak / size;
    state.counters["kept/file"] = kept / size;
}
BENCHMARK(memoryWhileLoading)->Iterations(1)->Unit(benchmark::kMillisecond);

void readTheFile(benchmark::State& state) {
    const MonthOnDisk month;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(month.files.read(month.file, std::size_t{64} << 20));
    state.SetBytesProcessed(static_cast<std::int64_t>(std::filesystem::file_size(month.file)) * state.iterations());
}
BENCHMARK(readTheFile)->Unit(benchmark::kMillisecond);

void storeFromDisk(benchmark::State& state) {
    MonthOnDisk month;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(HistoryStore(month.files, month.clock, month.calendar));
    state.SetBytesProcessed(static_cast<std::int64_t>(std::filesystem::file_size(month.file)) * state.iterations());
}
BENCHMARK(storeFromDisk)->Unit(benchmark::kMillisecond);

/// The baseline for saving: the same bytes are written over and over into one open file and forced to the disk.
void writeAndSync(benchmark::State& state) {
    const TemporaryFolder home;
    const std::string text = encodeHistory(monthOfSamples()).value();
    const FileDescriptor file(::open((home.path / "file").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    for ([[maybe_unused]] auto _ : state) {
        if (::pwrite(file.get(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()) ||
            ::fsync(file.get()) != 0)
            state.SkipWithError("cannot write");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(writeAndSync)->Unit(benchmark::kMillisecond)->UseRealTime();

void save(benchmark::State& state) {
    MonthOnDisk month;
    for ([[maybe_unused]] auto _ : state)
        month.store.save(monthEnd());
    state.SetBytesProcessed(static_cast<std::int64_t>(std::filesystem::file_size(month.file)) * state.iterations());
}
BENCHMARK(save)->Unit(benchmark::kMillisecond)->UseRealTime();

void summariesOfSevenDays(benchmark::State& state) {
    ::setenv("TZ", "Europe/Berlin", 1);
    const MonthOnDisk month;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(month.store.dailySummaries(7, monthEnd()));
}
BENCHMARK(summariesOfSevenDays)->Unit(benchmark::kMillisecond);

} // namespace

int printMemoryWhileLoading(const char* home) {
    PosixFiles files{home};
    const FakeClock clock{monthEnd()};
    const SystemCalendar calendar;
    std::ofstream("/proc/self/clear_refs") << 5; // resets the peak
    const double before = memory("VmRSS:");
    const HistoryStore store{files, clock, calendar};
    std::printf("%f %f", memory("VmHWM:") - before, memory("VmRSS:") - before);
    return store.samples.size() == monthOfSamples().size() ? EXIT_SUCCESS : EXIT_FAILURE;
}
