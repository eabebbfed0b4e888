// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/sound/SoundOutput.h"

#include <canberra.h>

#include <cstdint>

/// Plays through libcanberra, which finds the sound server or the sound card, and the files of the sound theme. Its
/// properties are those of `canberra.h`. It is in a plugin that is loaded for the first sound: most days have none, and
/// libcanberra and its dependencies would add to the cost of every start.
class CanberraOutput final : public SoundOutput {
public:
    CanberraOutput() = default;
    ~CanberraOutput() override;
    CanberraOutput(const CanberraOutput&) = delete;
    CanberraOutput& operator=(const CanberraOutput&) = delete;

    Result play(const Properties& properties, std::function<void()> finished) override;

private:
    ca_context* context_ = nullptr;
    std::function<void()> finished_;

    bool open();
    static void finish(ca_context* context, std::uint32_t id, int error, void* output);
};

/// The plugin's entry point; the caller owns the result.
extern "C" __attribute__((visibility("default"))) SoundOutput* makeCanberraOutput();
