// SPDX-License-Identifier: GPL-3.0-or-later
#include "battery/BatteryReader.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/files/JsonUserDefaults.h"
#include "platform/linux/files/PosixFiles.h"
#include "platform/linux/files/ReadDescriptor.h"
#include "platform/linux/power/SysfsPowerSources.h"
#include "platform/linux/session/QtMainLoop.h"
#include "platform/linux/session/SystemCalendar.h"
#include "platform/linux/session/SystemClock.h"
#include "shell/AppModel.h"
#include "support/FakePlatform.h"
#include "support/Fixture.h"
#include "support/TemporaryFolder.h"

#include <QCoreApplication>
#include <benchmark/benchmark.h>

#include <fcntl.h>

namespace {

/// The devices of a laptop with a battery, an adapter and a wireless mouse, as plain files.
class Laptop {
public:
    Laptop() { Fixture::load(std::string(VELMORA_FIXTURES) + "/legion-full-with-mouse.json").writeTree(sysfs.path); }
    TemporaryFolder sysfs;
};

/// The baseline for a snapshot: every attribute file of the same devices is opened, read and closed.
void readEveryFile(benchmark::State& state) {
    const Laptop laptop;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(laptop.sysfs.path)) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    for ([[maybe_unused]] auto _ : state) {
        for (const auto& file : files) {
            const FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
            benchmark::DoNotOptimize(readDescriptor(descriptor.get(), 4096));
        }
    }
}
BENCHMARK(readEveryFile);

void oneSnapshot(benchmark::State& state) {
    const Laptop laptop;
    const SystemClock clock;
    QtMainLoop loop;
    SysfsPowerSources sources(laptop.sysfs.path, clock, loop);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(sources.snapshot());
}
BENCHMARK(oneSnapshot);

void wholeRefresh(benchmark::State& state) {
    const Laptop laptop;
    const TemporaryFolder home;
    SystemClock clock;
    SystemCalendar calendar;
    QtMainLoop loop;
    PosixFiles files(home.path);
    JsonUserDefaults defaults(home.path / "defaults.json", files, loop);
    SysfsPowerSources sources(laptop.sysfs.path, clock, loop);
    FakePlatform fake;
    AppModel model({sources, fake.powerSaving, fake.lowPowerSwitch, fake.sessionEvents, loop, clock, calendar, defaults,
                    files, fake.statusBar, fake.windows, fake.dialogs, fake.notificationCenter, fake.bundle,
                    fake.sounds, fake.loginItem});
    for ([[maybe_unused]] auto _ : state)
        model.refresh(AppModel::Reason::timer);
}
BENCHMARK(wholeRefresh);

} // namespace

/// The adapters need Qt's event loop.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
