// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/sound/CanberraSounds.h"

#include "platform/linux/sound/CanberraOutput.h"
#include "platform/qt/PluginLoader.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

namespace {

/// A name is one word of ASCII letters, so that it cannot lead out of the folder.
bool isName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char letter) {
        return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
    });
}

/// The properties that all sounds share. The role makes them follow the desktop's volume for alerts; sounds this rare
/// are not cached in the server.
SoundOutput::Properties alert(std::string mediaName) {
    return {{CA_PROP_MEDIA_ROLE, "event"},
            {CA_PROP_MEDIA_NAME, std::move(mediaName)},
            {CA_PROP_EVENT_DESCRIPTION, "Battery alert"},
            {CA_PROP_CANBERRA_CACHE_CONTROL, "never"}};
}

SoundOutput::Properties soundFile(const std::string& name, const std::filesystem::path& file) {
    SoundOutput::Properties properties = alert(name);
    properties[CA_PROP_MEDIA_FILENAME] = file;
    return properties;
}

/// A sound of the theme. Without a theme name libcanberra uses "freedesktop", which all others fall back to.
SoundOutput::Properties themeSound(const std::string& event) {
    SoundOutput::Properties properties = alert(event);
    properties[CA_PROP_EVENT_ID] = event;
    return properties;
}

class Silence final : public SoundOutput {
    Result play(const Properties& /*properties*/, std::function<void()> /*finished*/) override {
        return Result::Failed;
    }
};

} // namespace

CanberraSounds::CanberraSounds(const std::filesystem::path& folder, SoundThread::MakeOutput makeOutput)
    : folder_(std::filesystem::absolute(folder))
    , thread_(std::move(makeOutput)) {}

void CanberraSounds::play(std::string_view name) {
    if (const auto found = file(name))
        thread_.play({soundFile(std::string(name), *found)});
}

void CanberraSounds::playDefault() {
    SoundThread::Choices choices{themeSound("message")};
    if (const auto glass = file("Glass"))
        choices.push_back(soundFile("Glass", *glass));
    thread_.play(std::move(choices));
}

std::optional<std::filesystem::path> CanberraSounds::file(std::string_view name) const {
    if (!isName(name))
        return std::nullopt;
    std::filesystem::path path = folder_ / (std::string(name) + ".wav");
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return std::nullopt;
    return path;
}

std::unique_ptr<SoundOutput> CanberraSounds::canberra() {
    const auto make =
        reinterpret_cast<decltype(&makeCanberraOutput)>(pluginFunction("velmora-sound", "makeCanberraOutput"));
    if (make == nullptr) // the rest works without the plugin
        return std::make_unique<Silence>();
    return std::unique_ptr<SoundOutput>(make());
}
