// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryFile.h"
#include "shell/AppModel.h"
#include "support/FakePlatform.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

using namespace std::chrono_literals;

/// A laptop with a history, at twenty past four on a Friday afternoon; all can be changed until the model starts.
struct PopoverScene {
    FakePlatform fake;

    PopoverScene() {
        fake.clock.setNow(std::chrono::sys_days{std::chrono::year(2026) / 11 / 20} + 16h + 20min);
        battery(80, true, false);
        registry(312, 4600);
        past(7);
    }

    void battery(int percent, bool pluggedIn, bool charging, int minutes = -1) {
        percent_ = percent;
        pluggedIn_ = pluggedIn;
        Dictionary description = internalBattery(percent, pluggedIn, charging);
        if (minutes >= 0)
            description.insert_or_assign(charging ? "Time to Full Charge" : "Time to Empty", Value(minutes));
        fake.powerSources.sources = {Value(description)};
    }

    void registry(int cycles, int full, int milliamperes = -640) {
        fake.powerSources.hasRegistry = true;
        fake.powerSources.registry = Value(Dictionary{{"CycleCount", Value(cycles)},
                                                      {"DesignCapacity", Value(5000)},
                                                      {"AppleRawMaxCapacity", Value(full)},
                                                      {"Temperature", Value(3120)},
                                                      {"Voltage", Value(11900)},
                                                      {"Amperage", Value(milliamperes)},
                                                      {"AdapterDetails", Value(Dictionary{{"Watts", Value(65)}})}});
    }

    /// A sample a minute over that many days, charging and discharging, asleep at night; the last hours lead up to now.
    void past(int days) {
        SampleList samples;
        const Date now = fake.clock.now();
        for (Duration age = days * 24h; age > 0s; age -= 60s) {
            const Date date = now - age;
            const double hour = std::fmod(date.time_since_epoch().count() / 3600, 24);
            if (hour < 7 || hour > 23)
                continue;
            const double phase = (hour - 9) / 14 * 2 * 3.14159265;
            const double usual = 58 + std::cos(phase) * 34 + std::sin(hour * 1.7) * 4;
            const double toNow = std::clamp(1 - age / Duration(3h), 0.0, 1.0);
            const bool plugged = toNow > 0 ? pluggedIn_ : std::sin(phase) < -0.2;
            samples.push_back({.t = date.time_since_epoch().count(),
                               .p = std::lround(std::clamp(usual * (1 - toNow) + percent_ * toNow, 3.0, 100.0)),
                               .c = plugged && toNow == 0,
                               .a = plugged});
        }
        fake.files.files["/home/user/.local/share/Velmora/history.json"] = *encodeHistory(samples);
    }

    /// The started model.
    AppModel& started() {
        if (!model_) {
            model_ = std::make_unique<AppModel>(fake.platform());
            model_->start();
        }
        return *model_;
    }

private:
    int percent_ = 0;
    bool pluggedIn_ = false;
    std::unique_ptr<AppModel> model_;
};
