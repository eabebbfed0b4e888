// SPDX-License-Identifier: GPL-3.0-or-later
// The cost of the settings window from the click to its first frame, when it is made and when it opens again, beside a
// bare window with as many plain controls.
#include "BareSettings.h"
#include "alerts/Prefs.h"
#include "shell/AppModel.h"
#include "support/FakePlatform.h"
#include "views/settings/SettingsView.h"
#include "views/settings/SettingsWindow.h"

#include <QApplication>
#include <QPixmap>
#include <benchmark/benchmark.h>

namespace {

struct Laptop {
    FakePlatform fake;
    AppModel model{fake.platform()};
    Laptop() { fake.defaults.registerDefaults(Prefs::defaults()); }

    std::unique_ptr<QDialog> settings() {
        return std::make_unique<SettingsWindow>(new SettingsView(model, fake.platform()));
    }
};

/// Shows the window and paints all of it.
void show(QDialog& window) {
    window.show();
    QCoreApplication::processEvents();
    benchmark::DoNotOptimize(window.grab());
}

void bareFirst(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        show(*makeBareSettings());
}
BENCHMARK(bareFirst)->Unit(benchmark::kMillisecond);

void settingsFirst(benchmark::State& state) {
    Laptop laptop;
    for ([[maybe_unused]] auto _ : state)
        show(*laptop.settings());
}
BENCHMARK(settingsFirst)->Unit(benchmark::kMillisecond);

void again(benchmark::State& state, QDialog& window) {
    show(window);
    for ([[maybe_unused]] auto _ : state) {
        window.hide();
        show(window);
    }
}

void bareAgain(benchmark::State& state) {
    again(state, *makeBareSettings());
}
BENCHMARK(bareAgain)->Unit(benchmark::kMillisecond);

void settingsAgain(benchmark::State& state) {
    Laptop laptop;
    again(state, *laptop.settings());
}
BENCHMARK(settingsAgain)->Unit(benchmark::kMillisecond);

void dropMessage(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& /*message*/) {}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(dropMessage); // warnings about what Qt's offscreen platform cannot do
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
