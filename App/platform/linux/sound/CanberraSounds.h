// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SystemSounds.h"
#include "platform/linux/sound/SoundThread.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

/// The sounds of a folder of WAV files, and the message sound of the desktop's sound theme. A later sound ends an
/// earlier one.
class CanberraSounds final : public SystemSounds {
public:
    /// `folder` holds "<name>.wav". `makeOutput` is libcanberra unless a test wants to listen.
    explicit CanberraSounds(const std::filesystem::path& folder, SoundThread::MakeOutput makeOutput = canberra);

    void play(std::string_view name) override;

    /// Plays "Glass" if no theme has a message sound.
    void playDefault() override;

    /// The absolute path of the sound with this name; empty when there is none.
    std::optional<std::filesystem::path> file(std::string_view name) const;

private:
    std::filesystem::path folder_;
    SoundThread thread_;

    static std::unique_ptr<SoundOutput> canberra();
};
